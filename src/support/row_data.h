// Decoding of a whole answer field.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

// The raw bytes of one field, most significant byte first. A decoder that is given a length it does
// not accept throws a plain std::exception, so that an empty answer never passes for the number 0.
class CRowData {
  public:
    CRowData() = default;
    explicit CRowData(std::vector<unsigned char> bytes) : bytes_(std::move(bytes)) {}

    void assign(const std::vector<unsigned char>& bytes) { bytes_ = bytes; }
    const std::vector<unsigned char>& bytes() const { return bytes_; }

    std::uint8_t AsByte() const;    // 1 byte or more; the first counts
    bool AsBool() const;            // exactly 1 byte
    std::uint16_t AsWord() const;   // exactly 2 bytes
    std::uint32_t AsDWord() const;  // 0 to 4 bytes
    std::int64_t AsInt64() const;   // 0 to 4 bytes, widened without sign

    // 0 to 6 bytes with the register's odd weights: 3 bytes are byte0 * 2^24 + byte1 * 2^8 + byte2,
    // 4 bytes lose byte0. Kept: the card amount of the status record depends on it.
    std::uint32_t AsULong() const;

    // Exactly 5 bytes of hundredths, in currency units. Only the last 4 bytes count.
    double AsDouble5b() const;

    std::string AsStr() const;  // the bytes unchanged, embedded zeros included

  private:
    std::vector<unsigned char> bytes_;
};
