#include "engine/attempts.h"

#include <stdexcept>

#include "unit/engine/engine_test.h"

namespace test {
namespace {

// Fails until the given attempt; 0 fails for ever. Returns what Attempts says and how often
// on_failure ran.
std::pair<int, int> TryUntil(int limit, int succeeds_at) {
    int attempt = 0;
    int failures = 0;
    const int made = Attempts(
        limit,
        [&] {
            if (++attempt != succeeds_at) {
                throw std::runtime_error("not yet");
            }
        },
        [&] { ++failures; });
    EXPECT_EQ(made, attempt);
    return {made, failures};
}

TEST(Attempts, EndAtTheFirstThatReturns) {
    EXPECT_EQ(TryUntil(20, 1), std::make_pair(1, 0));
    EXPECT_EQ(TryUntil(20, 2), std::make_pair(2, 1));
    EXPECT_EQ(TryUntil(20, 19), std::make_pair(19, 18));
    EXPECT_EQ(TryUntil(20, 20), std::make_pair(20, 19));
}

TEST(Attempts, EndAtTheLimit) {
    EXPECT_EQ(TryUntil(20, 0), std::make_pair(20, 20));
    EXPECT_EQ(TryUntil(10, 0), std::make_pair(10, 10));
    EXPECT_EQ(TryUntil(20, 21), std::make_pair(20, 20));
}

TEST(Attempts, ExceptionOfTheFailureHandlerEndsThem) {
    int attempts = 0;
    EXPECT_THROW(Attempts(
                     20,
                     [&] {
                         ++attempts;
                         throw 1;
                     },
                     [] { throw ETarvoVesk(echNoCash); }),
                 ETarvoVesk);
    EXPECT_EQ(attempts, 1);
}

TEST(Attempts, FailureHandlerSeesTheException) {
    Failure seen = Failure::other;
    CTarvo source;
    Attempts(
        1, [&] { throw ETarvo(&source, 6, ""); }, [&] { seen = CurrentFailure(); });
    EXPECT_EQ(seen, Failure::money);
}

TEST(Attempts, KeepsTwentyAndCountsTheTwentiethAsAFailure) {
    EXPECT_EQ(kStepAttempts, 20);
    EXPECT_EQ(kCheckOutAttempts, 10);
    EXPECT_FALSE(Exhausted(1));
    EXPECT_FALSE(Exhausted(19));
    EXPECT_TRUE(Exhausted(20));
    EXPECT_TRUE(Exhausted(21));
}

template <typename Exception>
Failure FailureOf(const Exception& exception) {
    try {
        throw exception;
    } catch (...) {
        return CurrentFailure();
    }
}

TEST(CurrentFailure, OnlyCodeSixOfTheProtocolIsMoney) {
    CTarvo source;
    for (int code = 0; code < 8; ++code) {
        EXPECT_EQ(FailureOf(ETarvo(&source, code, "")),
                  code == 6 ? Failure::money : Failure::protocol)
            << code;
    }
}

TEST(CurrentFailure, EverythingElseIsOther) {
    EXPECT_EQ(FailureOf(EMiniCom(nullptr, errReadFile, "")), Failure::other);
    EXPECT_EQ(FailureOf(ETarvoVesk(echRegKass)), Failure::other);
    EXPECT_EQ(FailureOf(std::exception()), Failure::other);
    EXPECT_EQ(FailureOf(6), Failure::other);
}

}  // namespace
}  // namespace test
