#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace virtual_register {

// Upper-case hexadecimal; nothing is written as "-".
std::string to_hex(std::string_view bytes);
// Throws std::runtime_error for anything else.
std::string from_hex(std::string_view text);

// One line of a text file: a word, then names and values in turn.
class TextRecord {
  public:
    explicit TextRecord(std::string_view word) : text_(word) {}
    // Throws std::runtime_error when a name has no value.
    static TextRecord parse(const std::string& line);

    void add(const char* name, std::int64_t value);
    void add(const char* name, std::string_view bytes);
    std::string text() const { return text_ + '\n'; }

    bool has(std::string_view name) const { return find(name) != nullptr; }
    // Both throw std::runtime_error when the value is missing or not of its kind.
    std::int64_t number(std::string_view name, std::int64_t min, std::int64_t max) const;
    std::string bytes(std::string_view name) const;

  private:
    const std::string* find(std::string_view name) const;
    const std::string& value(std::string_view name) const;

    std::string text_;
    std::vector<std::pair<std::string, std::string>> values_;
};

}  // namespace virtual_register
