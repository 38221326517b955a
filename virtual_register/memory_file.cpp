#include "memory_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstring>
#include <sstream>

#include "text_file.h"
#include "text_record.h"

namespace virtual_register {
namespace {

constexpr std::string_view kFormat = "tarvo-register memory ";
constexpr int kVersion = 2;
constexpr std::size_t kRow = 16;

template <typename Image>
void put_image(std::string& to, const char* word, const Image& image) {
    for (std::size_t at = 0; at < image.size(); at += kRow) {
        const std::string_view row(reinterpret_cast<const char*>(image.data()) + at, kRow);
        if (row.find_first_not_of('\0') != std::string_view::npos) {
            const char place[2] = {static_cast<char>(at >> 8), static_cast<char>(at)};
            to += std::string(word) + ' ' + to_hex({place, 2}) + ' ' + to_hex(row) + '\n';
        }
    }
}

void put_line(std::string& to, const char* word, const SaleLine& line) {
    TextRecord record(word);
    record.add("name", line.name.text());
    record.add("barcode", line.barcode.text());
    record.add("price", line.price_kopecks);
    record.add("quantity", line.quantity_thousandths);
    record.add("amount", line.amount_kopecks);
    record.add("code", line.code);
    record.add("department", line.department);
    record.add("weighed", line.weighed ? 1 : 0);
    record.add("title", std::string_view(line.title.data(),
                                         std::size_t{line.title_pieces} * kTitlePieceLength));
    to += record.text();
}

SaleLine take_line(const TextRecord& record) {
    SaleLine line;
    line.name.add(record.bytes("name"));
    line.barcode.add(record.bytes("barcode"));
    line.price_kopecks = static_cast<std::uint32_t>(record.number("price", 0, UINT32_MAX));
    line.quantity_thousandths =
        static_cast<std::uint32_t>(record.number("quantity", 0, UINT32_MAX));
    line.amount_kopecks = static_cast<std::uint32_t>(record.number("amount", 0, UINT32_MAX));
    line.code = static_cast<std::uint16_t>(record.number("code", 0, UINT16_MAX));
    line.department = static_cast<std::uint8_t>(record.number("department", 0, UINT8_MAX));
    line.weighed = record.number("weighed", 0, 1) == 1;
    const std::string title = record.bytes("title");
    for (std::size_t at = 0; at < title.size(); at += kTitlePieceLength) {
        line.write_title(at / kTitlePieceLength, std::string_view{title}.substr(at));
    }
    return line;
}

void put_check(std::string& to, const OpenCheck& check) {
    if (!check.is_open()) {
        return;
    }
    TextRecord record("check");
    record.add("stage", static_cast<std::int64_t>(check.stage));
    record.add("type", static_cast<std::int64_t>(check.type));
    record.add("discount", check.discount_percent);
    record.add("card-kind", check.card_kind);
    record.add("card", check.card_number.text());
    if (check.cash_kopecks) {
        record.add("cash", *check.cash_kopecks);
    }
    to += record.text();
    for (const SaleLine& line : check.lines) {
        put_line(to, "line", line);
    }
}

void take_check(const TextRecord& record, OpenCheck& check) {
    check.stage = static_cast<OpenCheck::Stage>(record.number("stage", 0, 2));
    check.type = static_cast<CheckType>(record.number("type", 1, 6));
    check.discount_percent = static_cast<int>(record.number("discount", -99, 99));
    check.card_kind = static_cast<std::uint8_t>(record.number("card-kind", 0, UINT8_MAX));
    check.card_number.add(record.bytes("card"));
    if (record.has("cash")) {
        check.cash_kopecks = static_cast<std::uint32_t>(record.number("cash", 0, UINT32_MAX));
    }
}

void put_last(std::string& to, const PrintedCheck& check) {
    TextRecord record("last");
    record.add("tape", check.tape_number);
    record.add("number", check.number);
    record.add("type", static_cast<std::int64_t>(check.type));
    record.add("discount", check.discount_percent);
    record.add("discount-sum", check.discount_kopecks);
    record.add("total", check.total_kopecks);
    record.add("cash", check.cash_kopecks);
    record.add("change", check.change_kopecks);
    record.add("at", check.registered_at_s);
    record.add("card", check.card_number.text());
    to += record.text();
    for (const SaleLine& line : check.lines) {
        put_line(to, "last-line", line);
    }
}

PrintedCheck take_last(const TextRecord& record) {
    PrintedCheck check;
    check.tape_number = static_cast<std::uint16_t>(record.number("tape", 0, UINT16_MAX));
    check.number = static_cast<std::uint16_t>(record.number("number", 0, UINT16_MAX));
    check.type = static_cast<CheckType>(record.number("type", 1, 6));
    check.discount_percent = static_cast<int>(record.number("discount", -99, 99));
    check.discount_kopecks = record.number("discount-sum", -INT64_MAX, INT64_MAX);
    check.total_kopecks = static_cast<std::uint32_t>(record.number("total", 0, UINT32_MAX));
    check.cash_kopecks = static_cast<std::uint32_t>(record.number("cash", 0, UINT32_MAX));
    check.change_kopecks = static_cast<std::uint32_t>(record.number("change", 0, UINT32_MAX));
    check.registered_at_s = record.number("at", -INT64_MAX, INT64_MAX);
    check.card_number.add(record.bytes("card"));
    return check;
}

// "ram 0010 00FF..": the word, an address, the bytes.
template <typename Put>
void take_image(const std::string& line, std::size_t size, Put put) {
    std::istringstream words(line);
    std::string word;
    std::string place;
    std::string row;
    words >> word >> place >> row;
    const std::string address = from_hex(place);
    const std::string bytes = from_hex(row);
    if (address.size() != 2) {
        throw MemoryFileError("an address has four digits");
    }
    const auto at = static_cast<std::size_t>(static_cast<std::uint8_t>(address[0]) << 8 |
                                             static_cast<std::uint8_t>(address[1]));
    if (at + bytes.size() > size) {
        throw MemoryFileError("an address is past the end of the memory");
    }
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        put(at + i, static_cast<std::uint8_t>(bytes[i]));
    }
}

std::string second_word(const std::string& line) {
    const std::size_t at = line.find(' ');
    return at == std::string::npos ? std::string() : line.substr(at + 1);
}

void take_tape(const std::string& line, int version, Memory& memory) {
    constexpr std::size_t kBarcodeAt = 17;
    constexpr std::size_t kBarcodeLength = 5;
    std::string text = from_hex(second_word(line));
    // Version 1 wrote a record without barcode digits shorter by their place.
    if (version == 1 && text.size() == TapeRecord::kLength - kBarcodeLength) {
        text.insert(kBarcodeAt, kBarcodeLength, '\0');
    }
    AnswerPayload bytes;
    bytes.add(text);
    const auto record = TapeRecord::decode(bytes);
    if (!record) {
        throw MemoryFileError("a tape record has 31 bytes");
    }
    memory.tape.add(*record);
}

void take_product(const std::string& line, Memory& memory) {
    const std::string bytes = from_hex(second_word(line));
    ProductBlock block;
    if (bytes.size() != block.size()) {
        throw MemoryFileError("a product record has 39 bytes");
    }
    std::memcpy(block.data(), bytes.data(), block.size());
    memory.products.restore(block);
}

Memory take_register(const std::string& line) {
    const TextRecord record = TextRecord::parse(line);
    Identity identity;
    identity.firmware = static_cast<int>(record.number("firmware", 0, 999));
    if (find_firmware(identity.firmware) == nullptr) {
        throw MemoryFileError("no such firmware: " + std::to_string(identity.firmware));
    }
    identity.serial = record.bytes("serial");
    Memory memory(identity);
    memory.set_last_error(static_cast<std::uint8_t>(record.number("error", 0, UINT8_MAX)));
    return memory;
}

void take_counters(const std::string& line, Memory& memory) {
    const TextRecord record = TextRecord::parse(line);
    memory.tape_number = static_cast<std::uint16_t>(record.number("tape", 0, UINT16_MAX));
    memory.checks = static_cast<std::uint16_t>(record.number("checks", 0, UINT16_MAX));
    memory.drawer_kopecks = record.number("drawer", 0, 0xFFFFFFFFFF);
    memory.tape.start(static_cast<std::uint16_t>(record.number("first-record", 0, UINT16_MAX)));
}

void take(const std::string& line, int version, Memory& memory) {
    const std::string word = line.substr(0, line.find(' '));
    if (word == "counters") {
        take_counters(line, memory);
    } else if (word == "ram") {
        take_image(line, Memory::kRamSize,
                   [&](std::size_t at, std::uint8_t byte) { memory.put_ram(at, byte); });
    } else if (word == "eeprom") {
        take_image(line, Memory::kEepromSize,
                   [&](std::size_t at, std::uint8_t byte) { memory.put_eeprom(at, byte); });
    } else if (word == "tape") {
        take_tape(line, version, memory);
    } else if (word == "product") {
        take_product(line, memory);
    } else if (word == "check") {
        take_check(TextRecord::parse(line), memory.check);
    } else if (word == "line") {
        memory.check.lines.push_back(take_line(TextRecord::parse(line)));
    } else if (word == "last") {
        memory.last_check = take_last(TextRecord::parse(line));
    } else if (word == "last-line" && memory.last_check) {
        memory.last_check->lines.push_back(take_line(TextRecord::parse(line)));
    } else {
        throw MemoryFileError("\"" + word + "\" is not expected here");
    }
}

// The version that the first line names.
int take_version(const std::string& line) {
    int version = 0;
    const char* end = line.data() + line.size();
    const bool ours = line.compare(0, kFormat.size(), kFormat) == 0;
    const auto read = std::from_chars(ours ? line.data() + kFormat.size() : end, end, version);
    if (read.ec != std::errc() || read.ptr != end) {
        throw MemoryFileError("not a register's memory");
    }
    if (version < 1 || version > kVersion) {
        throw MemoryFileError("a memory of version " + std::to_string(version) +
                              "; this program reads versions 1 to " + std::to_string(kVersion));
    }
    return version;
}

std::string system_text(const std::string& what, const std::string& path) {
    return what + " " + path + ": " + std::strerror(errno);
}

}  // namespace

std::string memory_to_text(const Memory& memory) {
    std::string text = std::string(kFormat) + std::to_string(kVersion) + '\n';
    TextRecord identity("register");
    identity.add("firmware", memory.firmware().number);
    identity.add("serial", memory.serial());
    identity.add("error", memory.last_error());
    text += identity.text();
    TextRecord counters("counters");
    counters.add("tape", memory.tape_number);
    counters.add("checks", memory.checks);
    counters.add("drawer", memory.drawer_kopecks);
    counters.add("first-record",
                 static_cast<std::uint16_t>(memory.tape.count() - memory.tape.records().size()));
    text += counters.text();
    put_image(text, "ram", memory.ram());
    put_image(text, "eeprom", memory.eeprom());
    for (const TapeRecord& record : memory.tape.records()) {
        text += "tape " + to_hex(record.encode().text()) + '\n';
    }
    for (const auto& [code, block] : memory.products.all()) {
        text +=
            "product " + to_hex({reinterpret_cast<const char*>(block.data()), block.size()}) + '\n';
    }
    put_check(text, memory.check);
    if (memory.last_check) {
        put_last(text, *memory.last_check);
    }
    return text;
}

Memory memory_from_text(std::string_view text) {
    std::istringstream lines{std::string(text)};
    std::string line;
    std::size_t number = 0;
    const auto next = [&] {
        do {
            ++number;
            if (!std::getline(lines, line)) {
                line.clear();
                return false;
            }
        } while (line.empty() || line[0] == '#');
        return true;
    };
    try {
        next();
        const int version = take_version(line);
        next();
        Memory memory = take_register(line);
        memory.clear_images();
        while (next()) {
            take(line, version, memory);
        }
        if (memory.check.lines.size() > memory.firmware().check_lines_max) {
            throw MemoryFileError("the open check has more lines than this firmware takes");
        }
        // A file put together by hand need not repeat these in its images.
        memory.set_serial(std::string(memory.serial()));
        memory.set_last_error(memory.last_error());
        memory.note_sale_number();
        return memory;
    } catch (const std::runtime_error& error) {
        throw MemoryFileError("line " + std::to_string(number) + ": " + error.what());
    }
}

void save_memory(const Memory& memory, const std::string& path, Durability durability) {
    const std::string text = memory_to_text(memory);
    const std::string fresh = path + ".new";
    const int file = ::open(fresh.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (file < 0) {
        throw MemoryFileError(system_text("cannot write", fresh));
    }
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t written = ::write(file, text.data() + done, text.size() - done);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written < 0) {
            const std::string why = system_text("cannot write", fresh);
            ::close(file);
            ::unlink(fresh.c_str());
            throw MemoryFileError(why);
        }
        done += static_cast<std::size_t>(written);
    }
    // On the disk before the name changes, or a power cut could leave an empty file.
    const bool kept = durability == Durability::program || ::fsync(file) == 0;
    if (::close(file) != 0 || !kept || ::rename(fresh.c_str(), path.c_str()) != 0) {
        const std::string why = system_text("cannot replace", path);
        ::unlink(fresh.c_str());
        throw MemoryFileError(why);
    }
}

bool memory_file_exists(const std::string& path) {
    struct stat about {};
    return ::stat(path.c_str(), &about) == 0;
}

Memory load_memory(const std::string& path) {
    try {
        return memory_from_text(read_text(path));
    } catch (const MemoryFileError& error) {
        throw MemoryFileError(path + ", " + error.what());
    } catch (const std::runtime_error& error) {
        throw MemoryFileError(error.what());
    }
}

}  // namespace virtual_register
