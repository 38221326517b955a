#include "kkm/register_dump.h"

#include <cstdio>
#include <optional>
#include <utility>

#include "VeskTarvoM5/VeskTarvoM5.h"
#include "kkm/firmware_places.h"
#include "kkm/progress.h"
#include "kkm/report.h"

namespace kkm {
namespace {

constexpr int kAttempts = 3;
constexpr std::chrono::milliseconds kLongestSilence{500};
// So many requests without any answer, and the rest of that memory is not asked for.
constexpr int kSilentRequests = 3;

constexpr std::size_t kRamSize = 0x2000;
constexpr std::size_t kEepromSize = 0x4000;
// Hosts are known to read 95 bytes at once; more may be too much for a register.
constexpr std::size_t kPiece = 64;
constexpr std::size_t kStatisticsLength = 11;
constexpr std::size_t kRecordLength = 31;
constexpr std::size_t kRecordsMax = 0x10000;
constexpr std::size_t kProductLength = 39;
constexpr std::size_t kSerialLength = 8;

constexpr Query kReadProduct{0x08, 0x88};
constexpr Query kStatistics{0x0A, 0x8A};
constexpr Query kReadTape{0x12, 0x8B};
constexpr Query kSerialNumber{0x15, 0x95};

std::int64_t Number(const Bytes& bytes, std::size_t from, std::size_t width) {
    std::int64_t value = 0;
    for (std::size_t i = 0; i < width; ++i) {
        value = value * 256 + bytes[from + i];
    }
    return value;
}

Bytes Word(int value) {
    return {static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value)};
}

// What did not come, as runs of numbers.
class Gaps {
  public:
    void Add(std::size_t first, std::size_t last) {
        if (runs_.empty() || runs_.back().second + 1 != first) {
            runs_.emplace_back(first, last);
        }
        runs_.back().second = last;
    }
    bool Empty() const { return runs_.empty(); }
    // "7, 9 to 12" with numbers in that format.
    template <typename Format>
    std::string Text(Format format) const {
        std::string text;
        for (const auto& [first, last] : runs_) {
            text += (text.empty() ? "" : ", ") + format(first);
            text += first == last ? "" : " to " + format(last);
        }
        return text;
    }

  private:
    std::vector<std::pair<std::size_t, std::size_t>> runs_;
};

std::string Decimal(std::size_t number) {
    return std::to_string(number);
}

std::string Place(std::size_t address) {
    char text[8];
    std::snprintf(text, sizeof text, "0x%04X", static_cast<unsigned>(address & 0xFFFF));
    return text;
}

class Reader {
  public:
    Reader(const Address& address, Streams& streams) : address_(address), streams_(streams) {}

    RegisterDump Read(int last_product) {
        Find();
        ReadIdentity();
        ReadCounters();
        dump_.ram_read = ReadMemory("working memory", kReadRam, kRamSize, dump_.ram);
        dump_.eeprom_read = ReadMemory("EEPROM", kReadEeprom, kEepromSize, dump_.eeprom);
        ReadTape();
        ReadProducts(last_product);
        if (NothingCame()) {
            throw RegisterFailure(ExitStatus::not_read, "nothing but the firmware could be read",
                                  echDevice);
        }
        return dump_;
    }

  private:
    // Nothing unless an answer with that code comes.
    std::optional<Bytes> Ask(const Query& query, const Bytes& payload = {}) {
        if (silent_ >= kSilentRequests) {
            return std::nullopt;
        }
        bool silent = true;
        for (int attempt = 0; attempt < kAttempts; ++attempt) {
            const LineAnswer answer = Exchange(query.request, payload);
            if (answer.kind == AnswerKind::whole && answer.code == query.answer) {
                silent_ = 0;
                return answer.data;
            }
            silent = silent && answer.kind == AnswerKind::none;
        }
        silent_ = silent ? silent_ + 1 : 0;
        return std::nullopt;
    }
    std::optional<Bytes> Ask(const Query& query, const Bytes& payload, std::size_t length) {
        auto data = Ask(query, payload);
        return data && data->size() == length ? data : std::nullopt;
    }
    // A device that is taken away in the middle answers no more.
    LineAnswer Exchange(std::uint8_t request, const Bytes& payload) {
        try {
            return line_->Exchange(request, payload, kLongestSilence);
        } catch (const LineFailure&) {
            return {};
        }
    }

    void Find() {
        for (const int baud : {9600, 57600}) {
            line_.emplace(address_.Device(), baud);
            const LineAnswer answer = line_->Exchange(kVersion.request, {}, kLongestSilence);
            if (answer.kind == AnswerKind::whole && answer.code == kVersion.answer) {
                dump_.baud = baud;
                dump_.network = answer.network;
                dump_.firmware = FirmwareOf(answer.data);
                if (dump_.firmware == 0) {
                    throw RegisterFailure(ExitStatus::not_read, "the firmware is unknown",
                                          echNoVersion);
                }
                return;
            }
        }
        throw RegisterFailure(ExitStatus::no_connection, "no connection to " + address_.Text(),
                              echDevice);
    }

    // A byte that has a place in the working memory or, in later firmware, a command.
    int ReadByte(int place, const Query& command, const char* what) {
        const auto byte = place >= 0 ? AskRam(place, 1) : Ask(command, {}, 1);
        if (!byte) {
            dump_.missing.emplace_back(what);
            return 0;
        }
        return (*byte)[0];
    }
    std::optional<Bytes> AskRam(int address, std::size_t count) {
        return Ask(kReadRam, RamRequest(address, static_cast<std::uint8_t>(count)), count);
    }

    void ReadIdentity() {
        const Places places = PlacesOf(dump_.firmware);
        const auto serial =
            places.serial >= 0 ? AskRam(places.serial, kSerialLength) : Ask(kSerialNumber);
        if (serial) {
            dump_.serial = *serial;
        } else {
            dump_.missing.emplace_back("the serial number");
        }
        dump_.last_error = ReadByte(places.last_error, kLastError, "the last error");
        dump_.open_lines = ReadByte(places.sale_number, kSaleNumber, "the sale number");
    }

    void ReadCounters() {
        silent_ = 0;
        const auto data = Ask(kStatistics, {}, kStatisticsLength);
        if (!data) {
            dump_.missing.emplace_back("the counters");
            return;
        }
        dump_.tape = static_cast<int>(Number(*data, 0, 2));
        dump_.checks = static_cast<int>(Number(*data, 2, 2));
        record_count_ = static_cast<std::size_t>(Number(*data, 4, 2));
        dump_.drawer_kopecks = Number(*data, 6, 5);
    }

    // How many bytes came; zeros stand for the others.
    int ReadMemory(const std::string& what, const Query& query, std::size_t size, Bytes& image) {
        ProgressBar bar(streams_.err, streams_.err_terminal, "reading the " + what,
                        static_cast<int>(size / kPiece));
        const bool eeprom = query.request == kReadEeprom.request;
        silent_ = 0;
        std::size_t read = 0;
        Gaps gaps;
        for (image.clear(); image.size() < size; bar.Advance()) {
            const std::size_t at = image.size();
            const auto payload = eeprom
                                     ? EepromRequest(dump_.firmware, static_cast<int>(at), kPiece)
                                     : RamRequest(static_cast<int>(at), kPiece);
            const auto piece = Ask(query, payload, kPiece);
            if (piece) {
                image.insert(image.end(), piece->begin(), piece->end());
                read += kPiece;
            } else {
                image.resize(at + kPiece);
                gaps.Add(at, at + kPiece - 1);
            }
        }
        if (!gaps.Empty()) {
            dump_.missing.emplace_back("the " + what + (read > 0 ? " at " + gaps.Text(Place) : ""));
        }
        return static_cast<int>(read);
    }

    // Without the counters nobody says how many there are: up to the first that does not come.
    void ReadTape() {
        ProgressBar bar(streams_.err, streams_.err_terminal, "reading the control tape",
                        static_cast<int>(record_count_.value_or(0)));
        silent_ = 0;
        std::size_t unread = 0;
        Gaps gaps;
        for (std::size_t number = 0; number < record_count_.value_or(kRecordsMax); ++number) {
            const auto record = Ask(kReadTape, Word(static_cast<int>(number)), kRecordLength);
            if (record) {
                KeepRecord(number, *record);
            } else if (!record_count_) {
                dump_.missing.emplace_back("how many records the control tape has");
                return;
            } else {
                ++unread;
                gaps.Add(number, number);
            }
            bar.Advance();
        }
        if (unread > 0) {
            dump_.missing.emplace_back(Decimal(unread) + " of " + Decimal(*record_count_) +
                                       " records of the control tape: " + gaps.Text(Decimal));
        }
    }

    // The records of a memory follow each other: zeros stand for those of a gap.
    void KeepRecord(std::size_t number, const Bytes& record) {
        if (dump_.records.empty()) {
            dump_.first_record = static_cast<int>(number);
        }
        dump_.records.resize(number - static_cast<std::size_t>(dump_.first_record),
                             Bytes(kRecordLength));
        dump_.records.push_back(record);
        ++dump_.records_read;
    }

    void ReadProducts(int last) {
        ProgressBar bar(streams_.err, streams_.err_terminal, "reading the goods", last);
        silent_ = 0;
        Gaps gaps;
        for (int code = 1; code <= last; ++code) {
            const auto answer = Ask(kReadProduct, Word(code));
            if (!answer || answer->empty()) {
                gaps.Add(static_cast<std::size_t>(code), static_cast<std::size_t>(code));
            } else if ((*answer)[0] != 0 && answer->size() == kProductLength + 1) {
                dump_.products.emplace_back(answer->begin() + 1, answer->end());
            }
            bar.Advance();
        }
        if (!gaps.Empty()) {
            dump_.missing.emplace_back("the goods with the codes " + gaps.Text(Decimal));
        }
    }

    bool NothingCame() const {
        return dump_.serial.empty() && !record_count_ && dump_.ram_read == 0 &&
               dump_.eeprom_read == 0 && dump_.records.empty() && dump_.products.empty();
    }

    Address address_;
    Streams& streams_;
    std::optional<LineClient> line_;
    RegisterDump dump_;
    std::optional<std::size_t> record_count_;  // nothing when the counters could not be read
    int silent_ = 0;                           // requests in a row without any answer
};

}  // namespace

RegisterDump DumpRegister(const Address& address, int last_product, Streams& streams) {
    try {
        return Reader(address, streams).Read(last_product);
    } catch (const LineFailure& failure) {
        throw RegisterFailure(ExitStatus::no_connection, failure.what(), echNoPort);
    }
}

}  // namespace kkm
