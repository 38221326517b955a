#include "companion/register_reading.h"

#include <cmath>

#include "VeskTarvoM5/VeskTarvoM5.h"

namespace kkmcheck {
namespace {

constexpr int kTries = 4;
// The counter of records goes from one below to 0.
constexpr int kRecordsRound = 65536;

// One counter for each question, and the serial number last: an answer that belongs to another
// question is noticed, for its length is another.
std::optional<Counters> ReadCounters() {
    Counters counters;
    int next_sale = 0;
    if (GetKLNum(&counters.tape) == 0 || GetCheckCount(&counters.checks) == 0 ||
        GetSaleNum(&next_sale) == 0 || GetKKMNum(&counters.serial) == 0) {
        return std::nullopt;
    }
    counters.records = next_sale - 1;
    return counters;
}

// Counted from 1.
std::optional<TapeRecord> ReadRecord(int number) {
    unsigned char kind = 0;
    unsigned char payment = 0;
    double sum = 0;
    double unused[4] = {};
    double quantity = 0;
    unsigned char marked = 0;
    unsigned short code = 0;
    TapeRecord record;
    if (ReadSaleFromKL(number, &kind, &payment, &sum, &unused[0], &unused[1], &unused[2],
                       &unused[3], &quantity, &marked, &code, &record.digits[0], &record.digits[1],
                       &record.digits[2], &record.digits[3]) == 0) {
        return std::nullopt;
    }
    record.kind = kind;
    record.payment = payment;
    record.sum_kopecks = std::llround(sum * 100.0);
    record.quantity_thousandths = std::llround(quantity * 1000.0);
    record.marked = marked != 0;
    record.code = code;
    return record;
}

// False when it could not be read. A tape without records has no last one, unless their counter has
// just gone round.
bool ReadLast(const Counters& counters, std::string& text) {
    if (const auto record = ReadRecord(counters.records != 0 ? counters.records : kRecordsRound)) {
        text = Text(*record);
        return true;
    }
    if (GetErrorCode() == echKLRead) {
        text = "none";
        return true;
    }
    return false;
}

std::optional<Mark> ReadMarkOnce() {
    const auto counters = ReadCounters();
    Mark mark;
    if (!counters || !ReadLast(*counters, mark.last_record)) {
        return std::nullopt;
    }
    mark.counters = *counters;
    return mark;
}

std::optional<TapeReading> ReadTapeOnce(const Counters& before,
                                        const std::function<bool()>& time_is_left) {
    const auto counters = ReadCounters();
    if (!counters) {
        return std::nullopt;
    }
    TapeReading reading;
    reading.counters = *counters;
    if (counters->tape != before.tape || counters->records < before.records) {
        return reading;
    }
    if (!ReadLast(before, reading.last_record_before)) {
        return std::nullopt;
    }
    for (int number = before.records + 1; number <= counters->records; ++number) {
        const auto record = ReadRecord(number);
        if (!record || !time_is_left()) {
            return std::nullopt;
        }
        reading.records.push_back(*record);
    }
    return reading;
}

bool Same(const Mark& one, const Mark& other) {
    return one.counters == other.counters && one.last_record == other.last_record;
}

bool Same(const TapeReading& one, const TapeReading& other) {
    return one == other;
}

template <typename Read>
auto ReadTwice(Read read) {
    auto last = read();
    for (int i = 1; i < kTries; ++i) {
        auto next = read();
        if (last && next && Same(*last, *next)) {
            return next;
        }
        last.swap(next);
    }
    return decltype(last)();
}

}  // namespace

bool TapeReading::operator==(const TapeReading& other) const {
    return counters == other.counters && last_record_before == other.last_record_before &&
           records == other.records;
}

std::optional<Mark> ReadMark() {
    return ReadTwice(ReadMarkOnce);
}

std::optional<TapeReading> ReadTape(const Counters& before,
                                    const std::function<bool()>& time_is_left) {
    return ReadTwice([&] { return ReadTapeOnce(before, time_is_left); });
}

}  // namespace kkmcheck
