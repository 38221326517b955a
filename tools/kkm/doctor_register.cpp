#include <algorithm>
#include <cstdio>
#include <optional>

#include "kkm/doctor.h"
#include "kkm/firmware_places.h"
#include "kkm/line_client.h"
#include "kkm/open_check.h"
#include "kkm/register_state.h"

namespace kkm {
namespace {

using Findings = std::vector<Finding>;

constexpr std::uint8_t kStatus = 0x20;
constexpr int kTimed = 10;
constexpr int kNoPaper = 16;
// What the driver allows, and where it gets close.
constexpr double kFirstByteMs = 400;
constexpr double kGapMs = 100;
constexpr double kClose = 0.75;

std::string Ms(double ms) {
    char text[32];
    std::snprintf(text, sizeof text, "%.0f ms", ms);
    return text;
}

struct Found {
    int baud;
    LineAnswer answer;
};

// Asks at both speeds for the version. What was seen at the wrong one is told too.
std::optional<Found> FindRegister(const std::string& device, Findings& findings) {
    std::optional<Found> found;
    bool garbled = false;
    for (const int baud : {9600, 57600}) {
        LineClient line(device, baud);
        const LineAnswer answer = line.Exchange(kVersion.request);
        if (answer.kind == AnswerKind::whole && !found) {
            found = Found{baud, answer};
        }
        garbled =
            garbled || answer.kind == AnswerKind::broken || answer.kind == AnswerKind::cut_short;
    }
    if (found) {
        findings.push_back({Grade::good, "answer",
                            "a register answers at " + std::to_string(found->baud) +
                                " baud, network number " + std::to_string(found->answer.network),
                            ""});
    } else if (garbled) {
        findings.push_back({Grade::bad, "garbled",
                            "bytes come back, but no whole answer at 9600 or 57600 baud",
                            "check the register's speed (9600 or 57600), the cable and its ground; "
                            "another device may be on this line"});
    } else {
        findings.push_back({Grade::bad, "silent", "nobody answers at 9600 or 57600 baud",
                            "switch the register on, check the cable, that receive and transmit "
                            "are crossed, and that its host mode is on"});
    }
    return found;
}

// The firmware, as the driver calls it; 0 when it is none of the driver's.
int ExamineFirmware(const LineAnswer& answer, Findings& findings) {
    if (answer.code != kVersion.answer) {
        findings.push_back({Grade::bad, "wrong_answer",
                            "the answer to the question for the version is none",
                            "check that this is a Tarvo M5 register"});
        return 0;
    }
    const int told = FirmwareOf(answer.data);
    const int firmware = told == 312 ? 310 : told;
    if (firmware == 0) {
        findings.push_back({Grade::bad, "unknown_firmware",
                            "the driver does not know this firmware (" +
                                std::to_string(answer.data.empty() ? 0 : answer.data[0]) + "." +
                                std::to_string(answer.data.size() < 2 ? 0 : answer.data[1]) + ")",
                            "ask the service for a register or firmware that is supported: 3.01, "
                            "3.02, 3.03, 3.10, 4.00"});
        return 0;
    }
    findings.push_back({Grade::good, "firmware", "firmware " + std::to_string(firmware), ""});
    return firmware;
}

void ExamineTime(const std::string& key, const std::string& what, double ms, double limit,
                 Findings& findings) {
    const std::string text = what + Ms(ms) + ", the driver waits " + Ms(limit);
    if (ms > limit) {
        findings.push_back(
            {Grade::bad, key + "_too_late", text,
             "lower the adapter's latency, take hubs and converters out of the line"});
    } else if (ms > limit * kClose) {
        findings.push_back(
            {Grade::note, key + "_nearly_too_late", text,
             "lower the adapter's latency, take hubs and converters out of the line"});
    } else {
        findings.push_back({Grade::good, key, text, ""});
    }
}

bool HidesOpenCheck(const std::string& device, int state) {
    return MayHideAClosing(state) && OpenCheckAt({device, 0});
}

void ExamineState(const std::string& device, const LineAnswer& status, Findings& findings) {
    const StateName* const state = StateOfCode(status.code);
    const std::string name = state != nullptr ? std::string(state->name) + ", " + state->meaning
                                              : std::to_string(status.code) + ", unknown";
    const std::string text = "the register's state: " + name;
    if (HidesOpenCheck(device, status.code)) {
        findings.push_back(
            {Grade::bad, "check_open", text + ", and a check is open behind it", kOpenCheckAdvice});
        return;
    }
    switch (status.code) {
        case 0xCE:
            findings.push_back({Grade::note, "keyboard_locked", text,
                                "a check that failed may have left it so: kkm unlock"});
            break;
        case 0xC8:
        case 0xC9:
        case 0xCA:
            findings.push_back({Grade::bad, "check_open", text, kOpenCheckAdvice});
            break;
        case 0xCC:
            findings.push_back({Grade::note, "shift_closed", text,
                                "open the shift at the register before the first check"});
            break;
        default:
            findings.push_back({Grade::good, "state", text, ""});
            break;
    }
}

void ExamineTimes(const std::string& device, int baud, Findings& findings) {
    LineClient line(device, baud);
    LineAnswer last;
    double first_ms = 0;
    double gap_ms = 0;
    int answered = 0;
    for (int i = 0; i < kTimed; ++i) {
        const LineAnswer answer = line.Exchange(kStatus);
        if (answer.kind == AnswerKind::whole) {
            ++answered;
            last = answer;
            first_ms = std::max(first_ms, answer.first_ms);
            gap_ms = std::max(gap_ms, answer.gap_ms);
        }
    }
    if (answered < kTimed) {
        findings.push_back({Grade::bad, "answers_lost",
                            std::to_string(kTimed - answered) + " of " + std::to_string(kTimed) +
                                " answers did not come whole",
                            "check the cable, its length and its ground"});
    }
    if (answered > 0) {
        ExamineTime("first_byte", "answers begin after up to ", first_ms, kFirstByteMs, findings);
        ExamineTime("gap", "pauses between bytes up to ", gap_ms, kGapMs, findings);
        ExamineState(device, last, findings);
    }
}

// What a till stumbled over last, however long ago: no more than a note.
void ExamineLastError(const std::string& device, int baud, int firmware, Findings& findings) {
    LineClient line(device, baud);
    const int error = ReadLastError(line, firmware).value_or(0);
    if (error == kNoPaper) {
        findings.push_back({Grade::note, "no_paper", "the register's last error: 16, no paper",
                            "look at the roll, and whether a check is still open at the register"});
    } else if (error != 0) {
        findings.push_back({Grade::note, "register_error",
                            "the register's last error: " + std::to_string(error),
                            "its manual tells what the number means"});
    }
}

}  // namespace

std::vector<Finding> ExamineRegister(const std::string& device) {
    Findings findings;
    try {
        const auto found = FindRegister(device, findings);
        const int firmware = found ? ExamineFirmware(found->answer, findings) : 0;
        if (firmware != 0) {
            ExamineTimes(device, found->baud, findings);
            ExamineLastError(device, found->baud, firmware, findings);
        }
    } catch (const LineFailure& failure) {
        findings.push_back({Grade::bad, "line_failed", failure.what(),
                            "check the adapter and its cable; dmesg tells what the system saw"});
    }
    return findings;
}

}  // namespace kkm
