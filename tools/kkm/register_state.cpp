#include "kkm/register_state.h"

#include "kkm/firmware_places.h"
#include "kkm/open_check.h"

namespace kkm {
namespace {

constexpr std::uint8_t kStatus = 0x20;
constexpr std::uint8_t kStatistics = 0x0A;
constexpr std::size_t kStatisticsLength = 11;
constexpr int kSectionPlace = 0x12;
constexpr std::chrono::milliseconds kLongestSilence{500};

std::optional<RegisterCounters> ReadCounters(LineClient& line) {
    const LineAnswer answer = line.Exchange(kStatistics, {}, kLongestSilence);
    if (answer.kind != AnswerKind::whole || answer.data.size() != kStatisticsLength) {
        return std::nullopt;
    }
    const auto word = [&](std::size_t at) { return answer.data[at] * 256 + answer.data[at + 1]; };
    return RegisterCounters{word(0), word(2), word(4)};
}

int ReadFirmware(LineClient& line) {
    const LineAnswer answer = line.Exchange(kVersion.request, {}, kLongestSilence);
    const bool good = answer.kind == AnswerKind::whole && answer.code == kVersion.answer;
    return good ? FirmwareOf(answer.data) : 0;
}

std::optional<int> ReadByte(LineClient& line, const Query& query, const Bytes& payload) {
    const LineAnswer answer = line.Exchange(query.request, payload, kLongestSilence);
    if (answer.kind != AnswerKind::whole || answer.code != query.answer ||
        answer.data.size() != 1) {
        return std::nullopt;
    }
    return answer.data[0];
}

// What older firmware keeps at a place, and later firmware tells by command.
std::optional<int> ReadByte(LineClient& line, int place, const Query& command) {
    return place >= 0 ? ReadByte(line, kReadRam, RamRequest(place, 1))
                      : ReadByte(line, command, {});
}

std::optional<int> ReadSection(LineClient& line, int firmware) {
    const auto section = ReadByte(line, kReadEeprom, EepromRequest(firmware, kSectionPlace, 1));
    return section ? std::optional<int>(*section + 1) : std::nullopt;
}

void ReadWhatTheStateLeavesOpen(LineClient& line, RegisterLook& look) {
    const int state = look.state.code;
    const bool asks = state == kSaleCode || state == kSaleBarcode;
    if (!asks && !MayHideAClosing(state)) {
        return;
    }
    const int firmware = ReadFirmware(line);
    if (firmware == 0) {
        return;
    }
    look.open_lines = ReadByte(line, PlacesOf(firmware).sale_number, kSaleNumber);
    if (asks) {
        look.section = ReadSection(line, firmware);
    }
}

}  // namespace

std::optional<int> ReadLastError(LineClient& line, int firmware) {
    return ReadByte(line, PlacesOf(firmware).last_error, kLastError);
}

std::optional<RegisterLook> LookAtRegister(const Address& address) {
    const std::string device = address.Device();
    for (const int baud : {9600, 57600}) {
        try {
            LineClient line(device, baud);
            const LineAnswer answer = line.Exchange(kStatus, {}, kLongestSilence);
            if (answer.kind == AnswerKind::whole) {
                RegisterLook look{{baud, answer.code, answer.data}, ReadCounters(line)};
                ReadWhatTheStateLeavesOpen(line, look);
                return look;
            }
        } catch (const LineFailure&) {
            return std::nullopt;  // the driver, which comes next, says it better
        }
    }
    return std::nullopt;
}

}  // namespace kkm
