#include "replay_service.h"

#include <iostream>
#include <stdexcept>

#include "exchange_log.h"
#include "text_file.h"

namespace virtual_register {
namespace {

Recording recording_of(const std::string& path) {
    try {
        return read_recording(read_text(path));
    } catch (const RecordingError& error) {
        throw std::runtime_error(path + ", " + error.what());
    }
}

}  // namespace

ReplayService::ReplayService(const Options& options)
    : ReplayService(options, recording_of(options.replay_file)) {}

ReplayService::ReplayService(const Options& options, const Recording& recording)
    : file_(options.replay_file),
      replay_(recording),
      wire_(recording.baud, options.pace),
      link_(options.link, wire_.tty_name()),
      log_(options.log_file, OutputFile::Mode::append) {}

bool ReplayService::run(const volatile int& stop) {
    std::vector<std::string> news;
    while (stop == 0 && !said_all()) {
        news.clear();
        wire_.wait(wire_.next_us(), false, news);
        for (const std::string& one : news) {
            log_.write("-- " + one + '\n');
        }
        while (const auto request = wire_.next_request()) {
            if (!serve(*request)) {
                return false;
            }
        }
        wire_.flush();
    }
    if (!replay_.finished()) {
        std::cerr << "tarvo-register: " << file_ << ": the host came to exchange " << replay_.done()
                  << " of " << replay_.all() << '\n';
    }
    return replay_.finished();
}

bool ReplayService::serve(const Request& request) {
    const std::int64_t now = wire_.now_us();
    const Replay::Outcome outcome = replay_.next(request);
    log_.write("-> " + describe(request) + '\n');
    if (outcome.exchange == nullptr) {
        std::cerr << "tarvo-register: " << file_ << ": after " << replay_.done() << " of "
                  << replay_.all() << " exchanges " << outcome.mismatch << '\n';
        return false;
    }
    if (outcome.passed_over > 0) {
        log_.write("-- passed over: " + std::to_string(outcome.passed_over) + '\n');
    }
    log_.write("<- as in line " + std::to_string(outcome.exchange->line) + '\n');
    if (outcome.exchange->answer) {
        wire_.send(outcome.exchange->answer->bytes, now + outcome.exchange->answer->delay_us);
    }
    return true;
}

}  // namespace virtual_register
