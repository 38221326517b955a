#include "support/oem_text.h"

#include "VeskTarvoM5/VeskTarvoM5.h"

void CharToOem(char* /*src*/, char* /*dst*/) {}

void OemToChar(char* /*src*/, char* /*dst*/) {}

std::string ToOem(std::string text) {
    CharToOem(text.data(), text.data());
    return text;
}

std::string FromOem(std::string text) {
    OemToChar(text.data(), text.data());
    return text;
}

std::string GetLastErrorMsg() {
    return {};
}
