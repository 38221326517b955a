// Arguments as no host should pass them.
#pragma once

#include <cstdint>
#include <string>

#include "fuzz/input.h"

namespace fuzz {

// Numbers at the edges of ranges, or any at all.
double AnyDouble(Input& input);
int AnyInt(Input& input);

// A text without zeros in it; sometimes none, which is a null pointer.
class AnyText {
  public:
    explicit AnyText(Input& input);
    char* Pointer() { return null_ ? nullptr : text_.data(); }

  private:
    std::string text_;
    bool null_;
};

// An output parameter; sometimes a null pointer. It tells whether the library wrote it.
template <typename Value>
class Output {
  public:
    explicit Output(Input& input) : null_(input.Choice(16) == 15) {}
    Value* Pointer() { return null_ ? nullptr : &value_; }
    bool IsNull() const { return null_; }
    bool Untouched() const { return std::equal_to<>()(value_, kMark); }
    const Value& Get() const { return value_; }

  private:
    static constexpr Value kMark = static_cast<Value>(0x5A);
    Value value_ = kMark;
    bool null_;
};

}  // namespace fuzz
