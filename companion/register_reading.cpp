#include "companion/register_reading.h"

#include <algorithm>
#include <cmath>

#include "VeskTarvoM5/VeskTarvoM5.h"

namespace kkmcheck {
namespace {

constexpr int kTries = 4;
// The counter of records goes from one below to 0.
constexpr int kRecordsRound = 65536;
// So many records are read at once, and then again: a fault costs no more than these.
constexpr int kStretch = 32;

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

bool IsSameTape(const Counters& before, const Counters& now) {
    return now.serial == before.serial && now.tape == before.tape && now.records >= before.records;
}

int NewRecords(const TapeRange& range, const Counters& now) {
    return std::min(now.records, range.end_record) - range.before.records;
}

// The counters, and the records behind the first `read` new ones.
std::optional<TapeReading> ReadStretchOnce(const TapeRange& range, int read,
                                           const TapeGoesOn& goes_on) {
    const auto counters = ReadCounters();
    if (!counters) {
        return std::nullopt;
    }
    TapeReading reading;
    reading.counters = *counters;
    if (!IsSameTape(range.before, *counters)) {
        return reading;
    }
    if (!ReadLast(range.before, reading.last_record_before)) {
        return std::nullopt;
    }
    const int all = NewRecords(range, *counters);
    if (all > kStretch && !goes_on(read, all)) {
        return std::nullopt;
    }
    const int first = range.before.records + read + 1;
    const int end = range.before.records + std::min(all, read + kStretch);
    for (int number = first; number <= end; ++number) {
        const auto record = ReadRecord(number);
        if (!record) {
            return std::nullopt;
        }
        reading.records.push_back(*record);
    }
    return reading;
}

// A stretch that belongs behind what was read. What was read of another memory goes.
void Append(TapeReading&& stretch, std::optional<TapeReading>& reading) {
    if (reading && stretch.counters.serial == reading->counters.serial &&
        stretch.counters.tape == reading->counters.tape &&
        stretch.counters.records >= reading->counters.records &&
        (reading->records.empty() || stretch.last_record_before == reading->last_record_before)) {
        stretch.records.insert(stretch.records.begin(), reading->records.begin(),
                               reading->records.end());
    } else if (reading && !reading->records.empty()) {
        stretch.records.clear();
    }
    reading = std::move(stretch);
}

// What the counters alone tell, when the tape is not read.
void KeepCounters(std::optional<TapeReading>& reading) {
    const auto counters = ReadCounters();
    if (counters && ReadCounters() == counters) {
        reading.emplace();
        reading->counters = *counters;
    }
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

bool ReadTape(const TapeRange& range, const TapeGoesOn& goes_on,
              std::optional<TapeReading>& reading) {
    for (;;) {
        const int read = reading ? static_cast<int>(reading->records.size()) : 0;
        auto stretch = ReadTwice([&] { return ReadStretchOnce(range, read, goes_on); });
        if (!stretch) {
            if (!reading) {
                KeepCounters(reading);
            }
            return false;
        }
        Append(std::move(*stretch), reading);
        if (!IsSameTape(range.before, reading->counters) ||
            static_cast<int>(reading->records.size()) >= NewRecords(range, reading->counters)) {
            return true;
        }
    }
}

}  // namespace kkmcheck
