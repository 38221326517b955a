#include "serial/mini_com_error.h"

#include <gtest/gtest.h>

#include "serial/mini_com.h"

namespace test {
namespace {

TEST(MiniComError, EachCodeIsItsOwnName) {
    const char* const names[] = {
        "errCreateFile",      "errReadFile",     "errWriteFile",
        "errGetCommState",    "errSetCommState", "errGetCommTimeouts",
        "errSetCommTimeouts", "errPurgeComm",    "errEscapeCommFunction",
    };
    int code = 0;
    for (const char* name : names) {
        EXPECT_STREQ(EMiniCom::CodeToStr(static_cast<MiniComErr>(code)), name);
        ++code;
    }
}

TEST(MiniComError, KeepsTheSpellingOfUnknownCodes) {
    for (const int code : {9, 10, 255, -1, -2147483647 - 1, 2147483647}) {
        EXPECT_STREQ(EMiniCom::CodeToStr(static_cast<MiniComErr>(code)), "Unknoun error") << code;
    }
}

TEST(MiniComError, EnumeratorsHaveTheirNumbers) {
    EXPECT_EQ(errCreateFile, 0);
    EXPECT_EQ(errReadFile, 1);
    EXPECT_EQ(errWriteFile, 2);
    EXPECT_EQ(errGetCommState, 3);
    EXPECT_EQ(errSetCommState, 4);
    EXPECT_EQ(errGetCommTimeouts, 5);
    EXPECT_EQ(errSetCommTimeouts, 6);
    EXPECT_EQ(errPurgeComm, 7);
    EXPECT_EQ(errEscapeCommFunction, 8);
}

TEST(MiniComError, DetailStandsBehindTheName) {
    const EMiniCom error(nullptr, errReadFile, "CMiniCom::Read sum timeout need read");
    EXPECT_EQ(error.code, 1);
    EXPECT_EQ(error.message, "errReadFile: CMiniCom::Read sum timeout need read");
}

TEST(MiniComError, WithoutDetailTheNameStandsAlone) {
    CMiniCom port;
    const EMiniCom error(&port, errWriteFile, "");
    EXPECT_EQ(error.code, 2);
    EXPECT_EQ(error.message, "errWriteFile");
}

TEST(MiniComError, DetailMayComeAsAStream) {
    std::ostringstream detail;
    EXPECT_EQ(EMiniCom(nullptr, errPurgeComm, detail).message, "errPurgeComm");
    detail << "byte " << 12;
    const EMiniCom error(nullptr, errPurgeComm, detail);
    EXPECT_EQ(error.code, 7);
    EXPECT_EQ(error.message, "errPurgeComm: byte 12");
}

TEST(MiniComError, KeepsNoTextOfItsOwnForWhat) {
    const EMiniCom error(nullptr, errReadFile, "detail");
    EXPECT_STREQ(error.what(), std::exception().what());
}

}  // namespace
}  // namespace test
