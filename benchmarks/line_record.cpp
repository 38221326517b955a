#include "line_record.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdio>

namespace bench {

namespace {

template <typename Function>
Function* System(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

LineRecord& Line() {
    static LineRecord line;
    return line;
}

std::string LineRecord::Text() const {
    std::string text;
    for (const Exchange& exchange : exchanges_) {
        char one[32];
        std::snprintf(one, sizeof one, "%s%02X:%zu:%zu", text.empty() ? "" : ",", exchange.command,
                      exchange.request, exchange.answer);
        text += one;
    }
    return text;
}

void LineRecord::Wrote(const unsigned char* frame, std::size_t count) {
    exchanges_.push_back({count > 3 ? frame[3] : 0U, count, 0});
}

void LineRecord::ReadByte() {
    if (!exchanges_.empty()) {
        ++exchanges_.back().answer;
    }
}

}  // namespace bench

using bench::Line;
using bench::System;

extern "C" {

ssize_t read(int fd, void* to, size_t count) {
    static const auto system_read = System<ssize_t(int, void*, size_t)>("read");
    const ssize_t result = system_read(fd, to, count);
    if (count == 1 && result == 1) {
        Line().ReadByte();
    }
    return result;
}

ssize_t write(int fd, const void* from, size_t count) {
    static const auto system_write = System<ssize_t(int, const void*, size_t)>("write");
    // Every request begins with a zero byte, no text does.
    const auto* const bytes = static_cast<const unsigned char*>(from);
    if (count > 0 && bytes[0] == 0) {
        Line().Wrote(bytes, count);
    }
    return system_write(fd, from, count);
}

int usleep(useconds_t us) {
    static const auto system_usleep = System<int(useconds_t)>("usleep");
    return system_usleep(us + Line().PlantedUs());
}

}  // extern "C"
