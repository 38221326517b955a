#include <cfloat>
#include <cmath>
#include <cstring>

#include "interface/last_error.h"
#include "interface/vesk.h"
#include "support/numbers.h"

namespace {

// Every line carries the same article code; the goods are told apart by their names.
constexpr auto kPlaceholderBarcode = "1234567890123";

constexpr std::size_t kMostLinesOfOldFirmware = 18;  // tested before the line is added
constexpr int kLastWithLineLimit = 302;
constexpr std::int64_t kHighestPrice = 9999999;
constexpr std::int64_t kHighestPriceOf300 = 999999;
constexpr double kHighestFraction = 65;
constexpr double kHighestCount = 65535;
constexpr double kDiscountLimit = 99.99;

bool BufferFull() {
    return kvesk.version() <= kLastWithLineLimit &&
           kvesk.check().sales.size() > kMostLinesOfOldFirmware;
}

std::uint32_t PriceInKopecks(double price) {
    const std::int64_t kopecks = ToKopecks(price);
    const std::int64_t highest =
        kvesk.version() == kkm_ver_300 ? kHighestPriceOf300 : kHighestPrice;
    if (kopecks < 1 || kopecks > highest) {
        throw ETarvoVesk(echPrice);
    }
    return static_cast<std::uint32_t>(kopecks);
}

// Decides whether a quantity has a fraction, on the host's own number.
bool IsFractional(double quantity) {
    if (!(std::fabs(quantity) <= FLT_MAX)) {
        throw ETarvoVesk(echQuantity);
    }
    const bool fractional = quantity - std::trunc(quantity) > 0;
    if (quantity > (fractional ? kHighestFraction : kHighestCount)) {
        throw ETarvoVesk(echQuantity);
    }
    return fractional;
}

// The line that the host counts as number `index`, from 1.
sale& LineAt(int index) {
    auto& lines = kvesk.check().sales;
    if (index < 1 || static_cast<std::size_t>(index) > lines.size()) {
        throw ETarvoVesk(echIndex);
    }
    return lines[static_cast<std::size_t>(index) - 1];
}

}  // namespace

int cbAddSale(char* name, double price, double quantity, int section) {
    return Guarded([&] {
        RequireArguments(name);
        if (BufferFull()) {
            throw ETarvoVesk(echSalesFull);
        }
        if (section < 1 || section > 15) {
            throw ETarvoVesk(echParam);
        }
        sale line;
        line.title = name;
        line.barcode = kPlaceholderBarcode;
        line.code = 1;
        line.section = static_cast<std::uint8_t>(section);
        line.price = PriceInKopecks(price);
        line.fractional = IsFractional(quantity);
        line.count = static_cast<float>(quantity);
        kvesk.check().sales.push_back(std::move(line));
        SetErrorCode(echOk);
    });
}

int cbDeleteSale(int index) {
    return Guarded([&] {
        auto& lines = kvesk.check().sales;
        lines.erase(lines.begin() + (&LineAt(index) - lines.data()));
    });
}

int cbGetSale(int index, char** name, double* price, double* quantity, int* section) {
    return Guarded([&] {
        RequireArguments(name, price, quantity, section);
        RequireArguments(*name);
        const sale& line = LineAt(index);
        std::memcpy(*name, line.title.c_str(), line.title.size() + 1);
        *price = line.price * 0.01;
        *quantity = line.count;
        *section = line.section;
    });
}

int cbGetSalesCount() {
    return static_cast<int>(kvesk.check().sales.size());
}

void cbClearSales() {
    Guarded([] { kvesk.check().clear(); });
}

double cbGetSum() {
    return kvesk.check().sum() * 0.01;
}

int cbSetCash(double sum) {
    // Kept: no frame here. A failed identification leaves the library as an exception.
    kvesk.Identify();
    const bool takes_cash = kvesk.version() != kkm_ver_300;
    kvesk.check().cash = takes_cash ? static_cast<std::uint32_t>(ToKopecks(sum)) : 0;
    return 1;
}

double cbGetCash() {
    return 0.0;
}

void cbSetReturnMode(int on) {
    if (on != 0) {
        kvesk.check().mode = mode_return;
    }
    SetErrorCode(echOk);
}

int cbGetReturnMode() {
    return kvesk.check().mode == mode_return ? 1 : 0;
}

void cbSetCreditMode(int on) {
    if (on != 0) {
        kvesk.check().mode = mode_credit;
    }
    SetErrorCode(echOk);
}

int cbGetCreditMode() {
    return kvesk.check().mode == mode_credit ? 1 : 0;
}

int cbSetDiscountValue(int value) {
    return Guarded([&] {
        if (value < -kDiscountLimit || value > kDiscountLimit) {
            kvesk.check().discount = 0;
            throw ETarvoVesk(echDiscount);
        }
        kvesk.check().discount = value;
    });
}

int cbGetDiscountValue() {
    return kvesk.check().discount;
}

void cbSetClearBufMode(int mode) {
    kvesk.setClearBuffer(mode > 0);
    SetErrorCode(echOk);
}

int cbGetClearBufMode() {
    SetErrorCode(echOk);
    return kvesk.clearBuffer() ? 1 : 0;
}

int cbClearTitle() {
    return Guarded([] { kvesk.Identify(); });
}

int cbClearBottom() {
    return Guarded([] { throw ETarvoVesk(echNotSupported); });
}
