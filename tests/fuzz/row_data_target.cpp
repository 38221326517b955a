// Answer fields: every decoder against the definition of its numbers, every length.
#include <exception>
#include <typeinfo>

#include "fuzz/input.h"
#include "fuzz/oracle.h"
#include "support/row_data.h"

namespace fuzz {
namespace {

// Runs the decoder; true when it returned, false when it refused the length.
template <typename Decoder>
bool Accepts(Decoder decode) {
    try {
        decode();
        return true;
    } catch (const std::exception& e) {
        Require(typeid(e) == typeid(std::exception), "a refusal is a plain exception");
        return false;
    }
}

std::uint64_t Weighted(const Bytes& bytes, std::size_t from) {
    std::uint64_t value = 0;
    for (std::size_t i = from; i < bytes.size(); ++i) {
        value = value * 256 + bytes[i];
    }
    return value;
}

void DecodeAll(const Bytes& bytes) {
    const CRowData field(bytes);
    const std::size_t size = bytes.size();
    const std::uint64_t value = size <= 8 ? Weighted(bytes, 0) : 0;
    Require(Accepts([&] { Require(field.AsByte() == bytes[0], "AsByte"); }) == (size >= 1),
            "AsByte takes 1 byte or more");
    Require(Accepts([&] { Require(field.AsBool() == (value != 0), "AsBool"); }) == (size == 1),
            "AsBool takes 1 byte");
    Require(Accepts([&] { Require(field.AsWord() == value, "AsWord"); }) == (size == 2),
            "AsWord takes 2 bytes");
    Require(Accepts([&] { Require(field.AsDWord() == value, "AsDWord"); }) == (size <= 4),
            "AsDWord takes up to 4 bytes");
    Require(Accepts([&] {
                Require(field.AsInt64() == static_cast<std::int64_t>(value), "AsInt64");
            }) == (size <= 4),
            "AsInt64 takes up to 4 bytes");
    Require(Accepts([&] { field.AsULong(); }) == (size <= 6), "AsULong takes up to 6 bytes");
    if (size == 3) {
        const std::uint64_t odd = (Weighted(bytes, 0) >> 16U << 24U) + Weighted(bytes, 1);
        Require(field.AsULong() == odd, "AsULong of 3 bytes leaves a gap");
    }
    Require(Accepts([&] {
                const double units = static_cast<double>(Weighted(bytes, 1)) * 0.01;
                Require(!(field.AsDouble5b() < units) && !(field.AsDouble5b() > units),
                        "AsDouble5b counts four bytes");
            }) == (size == 5),
            "AsDouble5b takes 5 bytes");
    Require(field.AsStr() == std::string(bytes.begin(), bytes.end()), "AsStr changes nothing");
}

}  // namespace
}  // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::DecodeAll({data, data + size});
    return 0;
}
