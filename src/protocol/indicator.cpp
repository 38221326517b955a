#include "protocol/tarvo.h"
#include "support/oem_text.h"
#include "support/time.h"

namespace {

constexpr std::size_t kIndicatorWidth = 16;
constexpr std::size_t kLineWidth = 16;
constexpr std::size_t kWideLineWidth = 7;
constexpr unsigned kPauseMs = 100;

std::string Fit(std::string text, std::size_t width) {
    text.resize(width, ' ');
    return ToOem(std::move(text));
}

}  // namespace

void CTarvo::showInfo(const std::string& text, unsigned char value, kkm_indicator mode) {
    const std::string line = Fit(text, kIndicatorWidth);
    Bytes data(line.begin(), line.end());
    data.push_back(value);
    data.push_back(static_cast<unsigned char>(mode));
    Exchange(commands::kShowInfo, std::move(data));
    Sleep(kPauseMs);
}

void CTarvo::printStr(bool wide, unsigned char value, const std::string& text) {
    const std::string line = Fit(text, wide ? kWideLineWidth : kLineWidth);
    Bytes data{0};
    data.insert(data.end(), line.begin(), line.end());
    data.push_back(0);
    data.push_back(value);
    Exchange(wide ? commands::kPrintWide : commands::kPrint, std::move(data), kPauseMs);
}
