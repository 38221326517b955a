// A host that is linked with the library and keeps the library's variables in its own memory, as
// the linker arranges it for programs of fixed address.
#include <gtest/gtest.h>

#include "VeskTarvoM5/VeskTarvoM5.h"

namespace {

int heard_code;

TEST(LinkedHost, CallbackInTheHostsOwnMemoryIsCalled) {
    heard_code = 0;
    EventErrorProc = [](int code, char*) { heard_code = code; };
    EXPECT_EQ(cbClearBottom(), 0);
    EXPECT_EQ(heard_code, 71);
    EXPECT_EQ(errVeskTarvo, 71) << "one variable on both sides";
    EventErrorProc = nullptr;
}

TEST(LinkedHost, MessageTableIsReadable) {
    EXPECT_EQ(err_msg_count, 8);
    EXPECT_STREQ(err_msg[4], "     ");
}

TEST(LinkedHost, RoundIsTheLibrarysOwn) {
    EXPECT_EQ(RoundHalfUp(-1.7), -1);
    EXPECT_EQ(RoundHalfUp(2.5), 3);
}

}  // namespace
