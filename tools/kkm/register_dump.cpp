#include "kkm/register_dump.h"

#include <algorithm>
#include <optional>

#include "VeskTarvoM5/VeskTarvoM5.h"
#include "kkm/progress.h"
#include "kkm/report.h"

namespace kkm {
namespace {

constexpr int kAttempts = 3;
constexpr std::chrono::milliseconds kLongestSilence{500};

constexpr std::size_t kRamSize = 0x2000;
constexpr std::size_t kEepromSize = 0x4000;
// Hosts are known to read 95 bytes at once; more may be too much for a register.
constexpr std::size_t kPiece = 64;
constexpr std::size_t kStatisticsLength = 11;
constexpr std::size_t kRecordLength = 31;
constexpr std::size_t kProductLength = 39;
constexpr std::size_t kSerialLength = 8;

// A request, the code of its answer, and since which firmware it is there.
struct Query {
    std::uint8_t request;
    std::uint8_t answer;
};
constexpr Query kReadEeprom{0x02, 0x82};
constexpr Query kReadRam{0x04, 0x84};
constexpr Query kReadProduct{0x08, 0x88};
constexpr Query kStatistics{0x0A, 0x8A};
constexpr Query kReadTape{0x12, 0x8B};
constexpr Query kSerialNumber{0x15, 0x95};
constexpr Query kVersion{0x34, 0xB4};
constexpr Query kSaleNumber{0x37, 0xB7};
constexpr Query kLastError{0x38, 0xB8};

// Where older firmware keeps what later firmware tells by command; -1 for nowhere.
struct Places {
    int serial = -1;
    int sale_number = -1;
    int last_error = -1;
};

Places PlacesOf(int firmware) {
    switch (firmware) {
        case 301:
            return {0x1A5C, 0x1594, 0x150D};
        case 302:
        case 303:
            return {0x1A5D, 0x1595, 0x1956};
        case 310:
        case 312:
            return {0x1658, 0x0914, -1};
        default:
            return {};
    }
}

// 0 for firmware that is not known.
int FirmwareOf(const Bytes& version) {
    if (version.size() < 2) {
        return 0;
    }
    const int raw = version[0] * 100 + version[1];
    if (version.size() == 3) {
        return raw == 302 && version[2] == 0 ? 303 : 0;
    }
    switch (raw) {
        case 211:
            return 301;
        case 304:
            return 400;
        case 302:
        case 303:
        case 310:
        case 312:
            return raw;
        default:
            return 0;
    }
}

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

class Reader {
  public:
    Reader(const Address& address, Streams& streams) : address_(address), streams_(streams) {}

    RegisterDump Read(int last_product) {
        Find();
        ReadIdentity();
        ReadCounters();
        dump_.ram = ReadMemory("working memory", kReadRam, kRamSize);
        dump_.eeprom = ReadMemory("EEPROM", kReadEeprom, kEepromSize);
        ReadTape();
        ReadProducts(last_product);
        return dump_;
    }

  private:
    // Nothing unless an answer with that code comes.
    std::optional<Bytes> Ask(const Query& query, const Bytes& payload = {}) {
        for (int attempt = 0; attempt < kAttempts; ++attempt) {
            const LineAnswer answer = line_->Exchange(query.request, payload, kLongestSilence);
            if (answer.kind == AnswerKind::whole && answer.code == query.answer) {
                return answer.data;
            }
        }
        return std::nullopt;
    }
    std::optional<Bytes> Ask(const Query& query, const Bytes& payload, std::size_t length) {
        auto data = Ask(query, payload);
        return data && data->size() == length ? data : std::nullopt;
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
        Bytes payload = Word(address);
        payload.push_back(static_cast<std::uint8_t>(count));
        return Ask(kReadRam, payload, count);
    }

    void ReadIdentity() {
        const Places places = PlacesOf(dump_.firmware);
        const auto serial =
            places.serial >= 0 ? AskRam(places.serial, kSerialLength) : Ask(kSerialNumber);
        if (!serial) {
            throw RegisterFailure(ExitStatus::not_read, "the serial number could not be read",
                                  echDevice);
        }
        dump_.serial = *serial;
        dump_.last_error = ReadByte(places.last_error, kLastError, "the last error");
        dump_.open_lines = ReadByte(places.sale_number, kSaleNumber, "the sale number");
    }

    void ReadCounters() {
        const auto data = Ask(kStatistics, {}, kStatisticsLength);
        if (!data) {
            throw RegisterFailure(ExitStatus::not_read, "the counters could not be read",
                                  echDevice);
        }
        dump_.tape = static_cast<int>(Number(*data, 0, 2));
        dump_.checks = static_cast<int>(Number(*data, 2, 2));
        records_ = static_cast<int>(Number(*data, 4, 2));
        dump_.drawer_kopecks = Number(*data, 6, 5);
    }

    Bytes ReadMemory(const std::string& what, const Query& query, std::size_t size) {
        ProgressBar bar(streams_.err, streams_.err_terminal, "reading the " + what,
                        static_cast<int>(size / kPiece));
        const bool wide = query.request == kReadEeprom.request && dump_.firmware >= 400;
        Bytes image;
        while (image.size() < size) {
            Bytes payload = Word(static_cast<int>(image.size()));
            if (wide) {
                payload.insert(payload.begin(), 2, 0);
            }
            payload.push_back(kPiece);
            const auto piece = Ask(query, payload, kPiece);
            if (!piece) {
                dump_.missing.push_back("the " + what);
                return {};
            }
            image.insert(image.end(), piece->begin(), piece->end());
            bar.Advance();
        }
        return image;
    }

    void ReadTape() {
        ProgressBar bar(streams_.err, streams_.err_terminal, "reading the control tape", records_);
        int unread = 0;
        for (int number = 0; number < records_; ++number) {
            const auto record = Ask(kReadTape, Word(number), kRecordLength);
            if (record) {
                dump_.records.push_back(*record);
            } else {
                // The records of a memory follow each other: what stands before a gap is left out.
                unread += 1 + static_cast<int>(dump_.records.size());
                dump_.records.clear();
                dump_.first_record = number + 1;
            }
            bar.Advance();
        }
        if (unread > 0) {
            dump_.missing.push_back(std::to_string(unread) + " of " + std::to_string(records_) +
                                    " records of the control tape");
        }
    }

    void ReadProducts(int last) {
        ProgressBar bar(streams_.err, streams_.err_terminal, "reading the goods", last);
        for (int code = 1; code <= last; ++code) {
            const auto answer = Ask(kReadProduct, Word(code));
            if (!answer || answer->empty()) {
                dump_.missing.push_back("the goods from code " + std::to_string(code) + " on");
                return;
            }
            if ((*answer)[0] != 0 && answer->size() == kProductLength + 1) {
                dump_.products.emplace_back(answer->begin() + 1, answer->end());
            }
            bar.Advance();
        }
    }

    Address address_;
    Streams& streams_;
    std::optional<LineClient> line_;
    RegisterDump dump_;
    int records_ = 0;
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
