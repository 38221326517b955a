#include "protocol/tarvo.h"
#include "support/oem_text.h"
#include "support/time.h"

namespace {

constexpr std::size_t kLineWidth = 16;
constexpr std::size_t kWideLineWidth = 7;
constexpr unsigned kPauseMs = 100;

}  // namespace

Bytes CTarvo::IndicatorLine(const std::string& text, unsigned char value, kkm_indicator mode) {
    constexpr std::size_t kWidth = 16;
    Bytes data = frame::NewPayload(kWidth + 2);
    PutOemText(text, data.data(), kWidth);
    data[kWidth] = value;
    data[kWidth + 1] = static_cast<unsigned char>(mode);
    return data;
}

void CTarvo::showInfo(const std::string& text, unsigned char value, kkm_indicator mode) {
    Exchange(commands::kShowInfo, IndicatorLine(text, value, mode));
    Sleep(kPauseMs);
}

void CTarvo::printStr(bool wide, unsigned char value, const std::string& text) {
    const std::size_t width = wide ? kWideLineWidth : kLineWidth;
    Bytes data = frame::NewPayload(1 + width + 2);
    PutOemText(text, data.data() + 1, width);
    data.back() = value;
    Exchange(wide ? commands::kPrintWide : commands::kPrint, std::move(data), kPauseMs);
}
