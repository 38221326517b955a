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
