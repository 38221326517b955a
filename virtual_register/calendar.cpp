#include "calendar.h"

namespace virtual_register {
namespace {

constexpr std::int64_t kSecondsPerDay = 86400;
constexpr std::int64_t kDaysPerEra = 146097;          // 400 years
constexpr std::int64_t kDaysFromMarchYear0 = 719468;  // 0000-03-01 to 1970-01-01

std::int64_t floor_divide(std::int64_t value, std::int64_t by) {
    return value / by - (value % by < 0 ? 1 : 0);
}

}  // namespace

// Years are counted from March, which puts the leap day at their end.
CalendarTime calendar_time(std::int64_t seconds) {
    const std::int64_t days = floor_divide(seconds, kSecondsPerDay);
    const int in_day = static_cast<int>(seconds - days * kSecondsPerDay);
    const std::int64_t shifted = days + kDaysFromMarchYear0;
    const std::int64_t era = floor_divide(shifted, kDaysPerEra);
    const int day_of_era = static_cast<int>(shifted - era * kDaysPerEra);
    const int year_of_era =
        (day_of_era - day_of_era / 1460 + day_of_era / 36524 - day_of_era / 146096) / 365;
    const int day_of_year = day_of_era - (365 * year_of_era + year_of_era / 4 - year_of_era / 100);
    const int month_from_march = (5 * day_of_year + 2) / 153;

    CalendarTime time;
    time.day = day_of_year - (153 * month_from_march + 2) / 5 + 1;
    time.month = month_from_march < 10 ? month_from_march + 3 : month_from_march - 9;
    time.year = static_cast<int>(era * 400) + year_of_era + (time.month <= 2 ? 1 : 0);
    time.hour = in_day / 3600;
    time.minute = in_day / 60 % 60;
    time.second = in_day % 60;
    return time;
}

std::int64_t seconds_of(const CalendarTime& time) {
    const std::int64_t year = time.year - (time.month <= 2 ? 1 : 0);
    const std::int64_t era = floor_divide(year, 400);
    const std::int64_t year_of_era = year - era * 400;
    const int month_from_march = time.month > 2 ? time.month - 3 : time.month + 9;
    const std::int64_t day_of_year = (153 * month_from_march + 2) / 5 + time.day - 1;
    const std::int64_t day_of_era =
        year_of_era * 365 + year_of_era / 4 - year_of_era / 100 + day_of_year;
    const std::int64_t days = era * kDaysPerEra + day_of_era - kDaysFromMarchYear0;
    return days * kSecondsPerDay + std::int64_t{time.hour} * 3600 + std::int64_t{time.minute} * 60 +
           time.second;
}

}  // namespace virtual_register
