#include "recording.h"

#include <cstdio>
#include <sstream>

#include "cp866.h"
#include "exchange_log.h"
#include "text_record.h"

namespace virtual_register {
namespace {

constexpr std::string_view kFormat = "tarvo-register recording ";
constexpr std::string_view kVersion = "1";

std::string seconds(std::int64_t at_us) {
    char text[40];
    std::snprintf(text, sizeof text, "%lld.%06lld", static_cast<long long>(at_us / 1000000),
                  static_cast<long long>(at_us % 1000000));
    return text;
}

std::string hex(const FrameBytes& bytes) {
    return to_hex(bytes.text());
}

// "12.000250", in microseconds.
std::int64_t us_of(const std::string& word) {
    long long seconds = 0;
    int us = 0;
    int end = 0;
    if (std::sscanf(word.c_str(), "%9lld.%6d%n", &seconds, &us, &end) != 2 ||
        word.find('.') + 7 != word.size() || static_cast<std::size_t>(end) != word.size() ||
        seconds < 0 || us < 0) {
        throw RecordingError("a line begins with its time: 0.250113");
    }
    return static_cast<std::int64_t>(seconds) * 1000000 + us;
}

FrameBytes to_frame(const std::string& word) {
    const std::string bytes = from_hex(word);
    if (bytes.size() > FrameBytes::capacity()) {
        throw RecordingError("no frame is so long");
    }
    FrameBytes frame;
    frame.add(bytes);
    return frame;
}

Request to_request(const std::string& word) {
    const FrameBytes frame = to_frame(word);
    FrameParser parser;
    for (std::uint8_t byte : frame) {
        parser.add(byte);
    }
    const auto request = parser.next();
    if (!request || build_frame(*request) != frame) {
        throw RecordingError("what the host sent is no whole frame");
    }
    return *request;
}

// One line without its remark, taken into the recording.
class Reader {
  public:
    void take(const std::string& text, std::size_t number) {
        std::istringstream stream(text);
        std::string time;
        std::string arrow;
        std::string bytes;
        std::string more;
        stream >> time >> arrow >> bytes;
        if (time.empty()) {
            return;
        }
        if (time == "line") {
            const TextRecord record = TextRecord::parse(text);
            recording.baud = static_cast<int>(record.number("baud", 9600, 57600));
            if (recording.baud != 9600 && recording.baud != 57600) {
                throw RecordingError("no register has this speed");
            }
            return;
        }
        const std::int64_t at_us = us_of(time);
        if (stream >> more) {
            throw RecordingError('"' + more + "\" is too much");
        }
        if (arrow == "->") {
            recording.exchanges.push_back({number, to_request(bytes), std::nullopt});
            request_us_ = at_us;
        } else if (arrow == "<-") {
            add_answer(at_us, to_frame(bytes));
        } else {
            throw RecordingError("behind the time stands -> or <-");
        }
    }

    Recording recording;

  private:
    void add_answer(std::int64_t at_us, const FrameBytes& bytes) {
        if (recording.exchanges.empty() || recording.exchanges.back().answer) {
            throw RecordingError("an answer to nothing");
        }
        if (at_us < request_us_) {
            throw RecordingError("an answer before its request");
        }
        recording.exchanges.back().answer = RecordedAnswer{at_us - request_us_, bytes};
    }

    std::int64_t request_us_ = 0;
};

void check_first_line(const std::string& line) {
    if (line.compare(0, kFormat.size(), kFormat) != 0) {
        throw RecordingError("not a recording of a register");
    }
    const std::string version = line.substr(kFormat.size());
    if (version != kVersion) {
        throw RecordingError("a recording of version " + version + "; this program reads version " +
                             std::string(kVersion));
    }
}

}  // namespace

Recording read_recording(std::string_view text) {
    std::istringstream lines{std::string(text)};
    std::string line;
    std::size_t number = 1;
    Reader reader;
    try {
        std::getline(lines, line);
        check_first_line(line);
        while (++number, std::getline(lines, line)) {
            reader.take(line.substr(0, line.find(';')), number);
        }
        if (reader.recording.exchanges.empty()) {
            throw RecordingError("nothing is recorded");
        }
    } catch (const std::runtime_error& error) {
        throw RecordingError("line " + std::to_string(number) + ": " + error.what());
    }
    return reader.recording;
}

std::string recording_head(int baud, const Memory& memory) {
    TextRecord line("line");
    line.add("baud", baud);
    return std::string(kFormat) + std::string(kVersion) + "\n; firmware " +
           std::to_string(memory.firmware().number) + ", serial " +
           to_utf8(without_padding(memory.serial())) + '\n' + line.text();
}

std::string recorded_request(std::int64_t at_us, const Request& request) {
    return seconds(at_us) + " -> " + hex(build_frame(request)) + "  ; " + describe(request) + '\n';
}

std::string recorded_answer(std::int64_t at_us, const FrameBytes& bytes,
                            const std::string& remark) {
    return seconds(at_us) + " <- " + hex(bytes) + "  ; " + remark + '\n';
}

}  // namespace virtual_register
