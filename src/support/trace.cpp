#include "support/trace.h"

#include <fstream>

#include "VeskTarvoM5/VeskTarvoM5.h"

void TraceLogFile(const std::string& fileName, const std::string& text) {
    std::ofstream file(fileName, std::ios::app);
    file << text;
}

void TraceLogFile(const std::string& fileName, const std::ostringstream& text) {
    TraceLogFile(fileName, text.str());
}

std::string v_str(const std::vector<unsigned char>& bytes) {
    std::string text;
    for (const unsigned char byte : bytes) {
        char hex[2];
        const auto end = std::to_chars(hex, hex + sizeof hex, byte, 16);
        text.append(hex, end.ptr);
        text += ' ';
    }
    return text;
}

void DbgPrint(const std::string& /*text*/) {}

void DbgTrace(const char* /*format*/, ...) {}

void trace_vector(const std::vector<unsigned char>& /*bytes*/, const std::string& /*text*/) {}

const char* zetdGetErrorMsg(int /*code*/) {
    return "";
}
