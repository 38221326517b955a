#include "kkm/dump_command.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <system_error>

#include "kkm/check_file.h"
#include "kkm/figures.h"
#include "kkm/register_dump.h"
#include "kkm/report.h"

namespace kkm {
namespace {

constexpr std::size_t kRow = 16;

// As the memory file has it: nothing is "-".
std::string Hex(Bytes::const_iterator from, Bytes::const_iterator to) {
    std::string text;
    for (; from != to; ++from) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02X", static_cast<unsigned>(*from));
        text += digits;
    }
    return text.empty() ? "-" : text;
}

std::string Hex(const Bytes& bytes) {
    return Hex(bytes.begin(), bytes.end());
}

// Rows of nothing but zeros are left out.
std::string ImageLines(const char* word, const Bytes& image) {
    std::string lines;
    for (std::size_t at = 0; at < image.size(); at += kRow) {
        const auto begin = image.begin() + static_cast<std::ptrdiff_t>(at);
        const auto end = begin + static_cast<std::ptrdiff_t>(std::min(kRow, image.size() - at));
        if (std::any_of(begin, end, [](std::uint8_t byte) { return byte != 0; })) {
            char place[8];
            std::snprintf(place, sizeof place, " %04X ", static_cast<unsigned>(at & 0xFFFF));
            lines += word + std::string(place) + Hex(begin, end) + '\n';
        }
    }
    return lines;
}

[[noreturn]] void FailFile(const std::string& what) {
    throw CheckFileError(what + ": " + std::generic_category().message(errno));
}

// The file is there as a whole or not at all.
void WriteFile(const std::string& path, const std::string& text) {
    const std::string fresh = path + ".new";
    std::ofstream file(fresh, std::ios::binary);
    file << text;
    file.close();
    if (!file || std::rename(fresh.c_str(), path.c_str()) != 0) {
        const int error = errno;
        std::remove(fresh.c_str());
        errno = error;
        FailFile("cannot write " + path);
    }
}

void Tell(const RegisterDump& dump, const DumpOptions& options, bool as_json, Streams& streams) {
    const bool to_output = options.file == "-";
    for (const std::string& what : dump.missing) {
        streams.err << "kkm: not read: " << what << std::endl;
    }
    if (dump.open_lines > 0) {
        streams.err << "kkm: a check with " << dump.open_lines
                    << " lines is open at the register; they cannot be read" << std::endl;
    }
    if (to_output) {
        return;
    }
    std::vector<Figure> figures = {
        TextFigure("file", "file", options.file),
        NumberFigure("firmware", "firmware", dump.firmware),
        TextFigure("serial_number", "serial number",
                   std::string(dump.serial.begin(), dump.serial.end())),
        NumberFigure("ram", "RAM bytes", dump.ram_read),
        NumberFigure("eeprom", "EEPROM bytes", dump.eeprom_read),
        NumberFigure("records", "tape records", dump.records_read),
        NumberFigure("products", "goods", static_cast<int>(dump.products.size()))};
    figures.push_back({"missing", "", "", dump.missing});
    streams.out << (as_json ? FiguresAsJson(figures) : FiguresAsText(figures)) << std::flush;
}

}  // namespace

std::string DumpAsMemory(const RegisterDump& dump, const std::string& remark) {
    std::string text = "tarvo-register memory 2\n# " + remark + '\n';
    for (const std::string& what : dump.missing) {
        text += "# not read: " + what + '\n';
    }
    text += "register firmware " + std::to_string(dump.firmware) + " serial " + Hex(dump.serial) +
            " error " + std::to_string(dump.last_error) + "\ncounters tape " +
            std::to_string(dump.tape) + " checks " + std::to_string(dump.checks) + " drawer " +
            std::to_string(dump.drawer_kopecks) + " first-record " +
            std::to_string(dump.first_record) + '\n';
    text += ImageLines("ram", dump.ram) + ImageLines("eeprom", dump.eeprom);
    for (const Bytes& record : dump.records) {
        text += "tape " + Hex(record) + '\n';
    }
    for (const Bytes& product : dump.products) {
        text += "product " + Hex(product) + '\n';
    }
    return text;
}

ExitStatus RunDump(const Address& address, const DumpOptions& options, bool as_json,
                   Streams& streams) {
    const bool to_output = options.file == "-";
    if (!to_output && !options.replace && std::filesystem::exists(options.file)) {
        errno = EEXIST;
        FailFile("cannot write " + options.file);
    }
    try {
        const RegisterDump dump = DumpRegister(address, options.last_product, streams);
        const std::string text =
            DumpAsMemory(dump, "read at " + address.Text() + ", " + std::to_string(dump.baud) +
                                   " baud, network number " + std::to_string(dump.network));
        if (to_output) {
            streams.out << text << std::flush;
        } else {
            WriteFile(options.file, text);
        }
        Tell(dump, options, as_json, streams);
        return dump.missing.empty() ? ExitStatus::done : ExitStatus::not_read;
    } catch (const RegisterFailure& failure) {
        return Report(failure, as_json && !to_output, streams);
    }
}

}  // namespace kkm
