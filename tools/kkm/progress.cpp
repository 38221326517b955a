#include "kkm/progress.h"

namespace kkm {
namespace {

constexpr auto kEraseLine = "\r\033[K";
constexpr auto kGreen = "\033[32m";
constexpr auto kRed = "\033[31m";
constexpr auto kPlain = "\033[0m";
constexpr std::chrono::milliseconds kTick{200};

std::chrono::seconds Since(std::chrono::steady_clock::time_point begin) {
    return std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() -
                                                            begin);
}

}  // namespace

std::string TickerLine(const std::string& step, std::chrono::seconds elapsed) {
    return "  " + step + " ... " + std::to_string(elapsed.count()) + " s";
}

std::string BarLine(const std::string& what, int done, int all, std::chrono::milliseconds elapsed) {
    constexpr int kWidth = 20;
    const auto filled = static_cast<std::size_t>(all == 0 ? kWidth : kWidth * done / all);
    std::string line = what + " [" + std::string(filled, '#') + std::string(kWidth - filled, '.') +
                       "] " + std::to_string(done) + " of " + std::to_string(all);
    if (done > 0 && done < all) {
        const auto left = elapsed * (all - done) / done;
        line += ", " + std::to_string((left.count() + 999) / 1000) + " s left";
    }
    return line;
}

ProgressBar::ProgressBar(std::ostream& to, Terminal terminal, const std::string& what, int all)
    : to_(to), live_(terminal.live), what_(what), all_(all) {}

ProgressBar::~ProgressBar() {
    if (live_) {
        to_ << kEraseLine << std::flush;
    }
}

void ProgressBar::Advance() {
    ++done_;
    if (live_) {
        const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(
            std::chrono::steady_clock::now() - begin_);
        to_ << kEraseLine << BarLine(what_, done_, all_, elapsed) << std::flush;
    }
}

void Progress::Step(const std::string& text) {
    Done();
    step_ = text;
    begin_ = std::chrono::steady_clock::now();
    if (terminal_.live) {
        stop_ = false;
        ticker_ = std::thread([this] { Tick(); });
    } else {
        to_ << "  " << text << std::endl;
    }
}

void Progress::Note(const std::string& text) {
    Done();
    to_ << "  " << text << std::endl;
}

void Progress::Done() {
    End("ok", kGreen);
}

void Progress::Failed() {
    End("failed", kRed);
}

void Progress::Erase() {
    if (!step_.empty() && terminal_.live) {
        StopTicker();
        to_ << kEraseLine << std::flush;
    }
    step_.clear();
}

void Progress::End(const char* outcome, const char* colour) {
    if (!step_.empty() && terminal_.live) {
        StopTicker();
        to_ << kEraseLine << TickerLine(step_, Since(begin_)) << ' '
            << (terminal_.colour ? colour : "") << outcome << (terminal_.colour ? kPlain : "")
            << std::endl;
    }
    step_.clear();
}

void Progress::StopTicker() {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        stop_ = true;
    }
    stop_signal_.notify_one();
    ticker_.join();
}

void Progress::Tick() {
    std::unique_lock<std::mutex> lock(mutex_);
    while (!stop_) {
        to_ << kEraseLine << TickerLine(step_, Since(begin_)) << std::flush;
        stop_signal_.wait_for(lock, kTick, [this] { return stop_; });
    }
}

}  // namespace kkm
