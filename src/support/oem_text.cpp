#include "support/oem_text.h"

#include <algorithm>

#include "VeskTarvoM5/VeskTarvoM5.h"

void CharToOem(char* /*src*/, char* /*dst*/) {}

void OemToChar(char* /*src*/, char* /*dst*/) {}

void PutOemText(const std::string& text, unsigned char* field, std::size_t width) {
    const std::size_t length = std::min(text.size(), width);
    std::copy_n(text.begin(), length, field);
    std::fill_n(field + length, width - length, static_cast<unsigned char>(' '));
    auto* const converted = reinterpret_cast<char*>(field);
    CharToOem(converted, converted);
}

std::string FromOem(std::string text) {
    OemToChar(text.data(), text.data());
    return text;
}

std::string GetLastErrorMsg() {
    return {};
}
