#include "kkm/encoding.h"

#include <gtest/gtest.h>

namespace kkm {
namespace {

using Letters = std::vector<std::string>;

TEST(Encoding, CyrillicBecomesCodePage866) {
    const RegisterText text = ToRegisterText("Хлеб ржаной");
    EXPECT_EQ(text.bytes, "\x95\xAB\xA5\xA1 \xE0\xA6\xA0\xAD\xAE\xA9");
    EXPECT_EQ(text.lost, Letters{});
}

TEST(Encoding, LettersOutsideTheAlphabetProperAreThereToo) {
    EXPECT_EQ(ToRegisterText("Ёё№").bytes, "\xF0\xF1\xFC");
}

TEST(Encoding, AsciiStaysAsItIs) {
    EXPECT_EQ(ToRegisterText("Milk 3.2 %").bytes, "Milk 3.2 %");
}

TEST(Encoding, EmptyTextStaysEmpty) {
    EXPECT_EQ(ToRegisterText("").bytes, "");
}

TEST(Encoding, LostLettersBecomeQuestionMarksAndAreNamedOnce) {
    const RegisterText text = ToRegisterText("«Сыр» — «Российский»");
    EXPECT_EQ(text.bytes, "?\x91\xEB\xE0? ? ?\x90\xAE\xE1\xE1\xA8\xA9\xE1\xAA\xA8\xA9?");
    EXPECT_EQ(text.lost, (Letters{"«", "»", "—"}));
}

TEST(Encoding, LetterOfFourBytesIsOneLetter) {
    const RegisterText text = ToRegisterText("a😀b");
    EXPECT_EQ(text.bytes, "a?b");
    EXPECT_EQ(text.lost, Letters{"😀"});
}

TEST(Encoding, BytesThatAreNoUtf8AreLost) {
    EXPECT_EQ(ToRegisterText("a\xFF"
                             "b")
                  .bytes,
              "a?b");
    EXPECT_EQ(ToRegisterText("a\xD0").bytes, "a?");
}

}  // namespace
}  // namespace kkm
