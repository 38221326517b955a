#include "support/trace.h"

#include <gtest/gtest.h>

#include <locale>

#include "VeskTarvoM5/VeskTarvoM5.h"
#include "support/temp_directory.h"
#include "support/world.h"

namespace test {
namespace {

class TraceFileTest : public testing::Test {
  protected:
    TraceFileTest() {
        World::Get().Reset();
        World::Get().WriteTracesToDisk(true);
    }

    TempDirectory directory;
};

const std::string kText = "Info: check\n";

TEST_F(TraceFileTest, FileIsCreatedAndHoldsTheTextUnchanged) {
    TraceLogFile(directory.Path("new.log"), std::string("no stamp, no line end"));
    EXPECT_EQ(directory.Content("new.log"), "no stamp, no line end");
}

TEST_F(TraceFileTest, TextsAreAppended) {
    TraceLogFile("trace.log", std::string("one\n"));
    TraceLogFile("trace.log", std::string(""));
    TraceLogFile("trace.log", std::string("two\r\0\n", 6));
    EXPECT_EQ(directory.Content("trace.log"), std::string("one\ntwo\r\0\n", 10));
}

TEST_F(TraceFileTest, RelativeNameLiesInTheWorkingDirectory) {
    TraceLogFile("VeskTarvoM5.log", kText);
    EXPECT_EQ(directory.Content("VeskTarvoM5.log"), "Info: check\n");
}

TEST_F(TraceFileTest, FileMayBeRemovedBetweenTwoMessages) {
    TraceLogFile("trace.log", std::string("lost\n"));
    std::filesystem::remove(directory.Path("trace.log"));
    TraceLogFile("trace.log", std::string("kept\n"));
    EXPECT_EQ(directory.Content("trace.log"), "kept\n");
}

TEST_F(TraceFileTest, StreamIsWrittenWithItsWholeContents) {
    std::ostringstream text;
    text << "Warning: " << 17 << "\n";
    TraceLogFile("trace.log", text);
    TraceLogFile("trace.log", text);
    EXPECT_EQ(directory.Content("trace.log"), "Warning: 17\nWarning: 17\n");
}

TEST_F(TraceFileTest, TextOfAnyLengthIsWrittenWhole) {
    std::string all;
    for (const std::size_t length : {1022U, 1023U, 1024U, 1025U, 70000U}) {
        const std::string text(length, 'x');
        TraceLogFile("trace.log", text + '\n');
        all += text + '\n';
    }
    EXPECT_EQ(directory.Content("trace.log"), all);
}

TEST_F(TraceFileTest, FileThatCannotBeWrittenIsPassedOver) {
    std::filesystem::create_directory(directory.Path("occupied"));
    EXPECT_NO_THROW(TraceLogFile("occupied", kText));
    EXPECT_NO_THROW(TraceLogFile("missing/trace.log", kText));
    EXPECT_NO_THROW(TraceLogFile("", kText));
    EXPECT_NO_THROW(TraceLogFile("/dev/full", kText));
    EXPECT_FALSE(directory.Has("missing"));
}

TEST(Trace, VectorIsShortLowerCaseHexadecimal) {
    EXPECT_EQ(v_str({0x00, 0x03, 0xA0}), "0 3 a0 ");
    EXPECT_EQ(v_str({0x0F, 0x10, 0xFF}), "f 10 ff ");
    EXPECT_EQ(v_str({}), "");
}

TEST(Trace, DebugEntryPointsDoNothing) {
    const TempDirectory directory;
    World::Get().Reset();
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    DbgPrint("text");
    DbgTrace("%s %d", "text", 5);
    trace_vector({0x01}, "text");
    EXPECT_STREQ(zetdGetErrorMsg(5), "");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_TRUE(World::Get().Traces().empty());
    EXPECT_TRUE(directory.IsEmpty());
}

TEST(Trace, LineIsItsPiecesAndALineEnd) {
    EXPECT_EQ(trace::Line("Info: ", std::string("a b"), " = ", 5, ", ", -7), "Info: a b = 5, -7\n");
    EXPECT_EQ(trace::Line(), "\n");
    EXPECT_EQ(trace::Line(""), "\n");
}

TEST(Trace, BytesInALineAreNumbers) {
    EXPECT_EQ(trace::Line(static_cast<unsigned char>(65), " ", static_cast<signed char>(-1), " ",
                          std::uint8_t{200}, " ", true),
              "65 -1 200 1\n");
}

TEST(Trace, FractionsHaveUpToSixDigits) {
    struct Row {
        double number;
        const char* text;
    };
    const Row rows[] = {
        {0.0, "0\n"},
        {1.5, "1.5\n"},
        {0.1, "0.1\n"},
        {3.0, "3\n"},
        {-2.25, "-2.25\n"},
        {123456.0, "123456\n"},
        {12.3456789, "12.3457\n"},
        {1234567.0, "1.23457e+06\n"},
        {0.00001, "1e-05\n"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(trace::Line(row.number), row.text);
        EXPECT_EQ(trace::Line(static_cast<float>(row.number)), row.text);
    }
}

// Thousands in groups and a decimal comma, as a host's locale may have them.
class Grouping : public std::numpunct<char> {
  protected:
    char do_thousands_sep() const override { return '\''; }
    std::string do_grouping() const override { return "\3"; }
    char do_decimal_point() const override { return ','; }
};

TEST(Trace, NumbersAreIndependentOfTheHostsLocale) {
    const std::locale before = std::locale::global(std::locale(std::locale(), new Grouping));
    const std::string line = trace::Line(1234567, " ", 12.5);
    const std::string bytes = v_str({0xA0});
    std::locale::global(before);
    EXPECT_EQ(line, "1234567 12.5\n");
    EXPECT_EQ(bytes, "a0 ");
}

}  // namespace
}  // namespace test
