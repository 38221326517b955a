#include "text_record.h"

#include <charconv>
#include <sstream>
#include <stdexcept>

namespace virtual_register {
namespace {

int digit(char character) {
    if (character >= '0' && character <= '9') {
        return character - '0';
    }
    if (character >= 'A' && character <= 'F') {
        return character - 'A' + 10;
    }
    throw std::runtime_error("bytes are written with the digits 0 to 9 and A to F");
}

}  // namespace

std::string to_hex(std::string_view bytes) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    if (bytes.empty()) {
        return "-";
    }
    std::string text;
    text.reserve(2 * bytes.size());
    for (char character : bytes) {
        const auto byte = static_cast<std::uint8_t>(character);
        text += kDigits[byte >> 4];
        text += kDigits[byte & 0x0F];
    }
    return text;
}

std::string from_hex(std::string_view text) {
    if (text == "-") {
        return {};
    }
    if (text.empty() || text.size() % 2 != 0) {
        throw std::runtime_error("bytes are written with two digits each");
    }
    std::string bytes;
    bytes.reserve(text.size() / 2);
    for (std::size_t i = 0; i < text.size(); i += 2) {
        bytes += static_cast<char>(digit(text[i]) << 4 | digit(text[i + 1]));
    }
    return bytes;
}

TextRecord TextRecord::parse(const std::string& line) {
    std::istringstream words(line);
    std::string word;
    words >> word;
    TextRecord record(word);
    std::string name;
    while (words >> name) {
        std::string value;
        if (!(words >> value)) {
            throw std::runtime_error("\"" + name + "\" has no value");
        }
        record.values_.emplace_back(std::move(name), std::move(value));
    }
    return record;
}

void TextRecord::add(const char* name, std::int64_t value) {
    text_ += std::string(" ") + name + ' ' + std::to_string(value);
}

void TextRecord::add(const char* name, std::string_view bytes) {
    text_ += std::string(" ") + name + ' ' + to_hex(bytes);
}

std::int64_t TextRecord::number(std::string_view name, std::int64_t min, std::int64_t max) const {
    const std::string& text = value(name);
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number < min || number > max) {
        throw std::runtime_error("\"" + std::string(name) + " " + text + "\" is no number from " +
                                 std::to_string(min) + " to " + std::to_string(max));
    }
    return number;
}

std::string TextRecord::bytes(std::string_view name) const {
    return from_hex(value(name));
}

const std::string* TextRecord::find(std::string_view name) const {
    for (const auto& [known, value] : values_) {
        if (known == name) {
            return &value;
        }
    }
    return nullptr;
}

const std::string& TextRecord::value(std::string_view name) const {
    const std::string* found = find(name);
    if (found == nullptr) {
        throw std::runtime_error("\"" + std::string(name) + "\" is missing");
    }
    return *found;
}

}  // namespace virtual_register
