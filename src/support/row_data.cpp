#include "support/row_data.h"

#include <exception>

namespace {

void Accept(bool length_is_good) {
    if (!length_is_good) {
        throw std::exception();
    }
}

std::uint32_t FoldBigEndian(const std::vector<unsigned char>& bytes) {
    std::uint32_t value = 0;
    for (const unsigned char byte : bytes) {
        value = value << 8U | byte;
    }
    return value;
}

}  // namespace

std::uint8_t CRowData::AsByte() const {
    Accept(!bytes_.empty());
    return bytes_.front();
}

bool CRowData::AsBool() const {
    Accept(bytes_.size() == 1);
    return bytes_.front() != 0;
}

std::uint16_t CRowData::AsWord() const {
    Accept(bytes_.size() == 2);
    return static_cast<std::uint16_t>(FoldBigEndian(bytes_));
}

std::uint32_t CRowData::AsDWord() const {
    Accept(bytes_.size() <= 4);
    return FoldBigEndian(bytes_);
}

std::int64_t CRowData::AsInt64() const {
    return AsDWord();
}

std::uint32_t CRowData::AsULong() const {
    Accept(bytes_.size() <= 6);
    std::uint32_t value = 0;
    std::size_t left = bytes_.size();
    for (const unsigned char byte : bytes_) {
        const auto shift = static_cast<unsigned>(left * 8 % 32);
        value = value << shift | byte;
        --left;
    }
    return value;
}

double CRowData::AsDouble5b() const {
    Accept(bytes_.size() == 5);
    return static_cast<double>(FoldBigEndian(bytes_)) * 0.01;
}

std::string CRowData::AsStr() const {
    return {bytes_.begin(), bytes_.end()};
}
