#pragma once

#include <cstdint>

namespace virtual_register {

struct CalendarTime {
    int year = 1970;
    int month = 1;  // 1 to 12
    int day = 1;
    int hour = 0;
    int minute = 0;
    int second = 0;
};

// Both ways between the register's calendar and seconds since 1970. The register knows no time
// zones: these are seconds of its own clock.
CalendarTime calendar_time(std::int64_t seconds);
std::int64_t seconds_of(const CalendarTime& time);

}  // namespace virtual_register
