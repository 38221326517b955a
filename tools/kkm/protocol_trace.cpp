#include "kkm/protocol_trace.h"

#include <cstdio>
#include <sstream>

namespace kkm {
namespace {

// The codes of the protocol layer are no codes of the library.
constexpr const char* kTexts[] = {
    nullptr,
    "the port failed: look at the adapter and its cable",
    "an answer was broken or another request's: look at cable and ground, and at VeskTarvoM5.log",
    "the line failed: look at the adapter and its cable",
    "another register answered: only one may be on this line",
    "the register did not take a record of goods",
    "the register refused a price or a sum, or there is too little money",
    "the firmware is not known, or lacks what was asked: kkm doctor",
};

constexpr int kFieldsOfALine = 8;

// "2026:11:21 10:5:3 DevNum=0, Code=2, Msg=  , DbgMsg ="
bool ReadLine(const std::string& line, ProtocolFaults& fault) {
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    if (std::sscanf(line.c_str(), "%4d:%2d:%2d %2d:%2d:%2d DevNum=%3d, Code=%9d", &year, &month,
                    &day, &hour, &minute, &second, &fault.network_number,
                    &fault.code) != kFieldsOfALine) {
        return false;
    }
    char time[96];
    std::snprintf(time, sizeof time, "%04d-%02d-%02d %02d:%02d:%02d", year, month, day, hour,
                  minute, second);
    fault.first = time;
    fault.last = time;
    fault.count = 1;
    return true;
}

}  // namespace

std::vector<ProtocolFaults> ReadProtocolTrace(const std::string& trace) {
    std::vector<ProtocolFaults> all;
    std::istringstream lines(trace);
    for (std::string line; std::getline(lines, line);) {
        ProtocolFaults fault;
        if (!ReadLine(line, fault)) {
            continue;
        }
        if (!all.empty() && all.back().code == fault.code &&
            all.back().network_number == fault.network_number) {
            all.back().last = fault.last;
            ++all.back().count;
        } else {
            all.push_back(std::move(fault));
        }
    }
    return all;
}

std::string ProtocolFaultText(int code) {
    constexpr int kCount = sizeof kTexts / sizeof kTexts[0];
    return code > 0 && code < kCount ? kTexts[code] : "the driver has no such code";
}

}  // namespace kkm
