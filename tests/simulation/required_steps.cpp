// The steps that make several attempts.
#include <algorithm>
#include <cmath>

#include "simulation/required_driver.h"

namespace simulation {
namespace {

constexpr int kAttempts = 20;
constexpr Failed kGaveUp{Failing::engine, 2};

Payload SaleBlock(const RequiredLine& line) {
    Payload block(41, 0);
    if (!line.name.empty()) {
        for (std::size_t i = 0; i < 16; ++i) {
            block[i] = i < line.name.size() ? static_cast<unsigned char>(line.name[i]) : ' ';
        }
    }
    std::copy(line.barcode.begin(), line.barcode.end(), block.begin() + 15);
    std::uint32_t rest = line.kopecks;
    for (std::size_t at = 34; at >= 28; --at) {
        block[at] = static_cast<unsigned char>(rest % 10);
        rest /= 10;
    }
    block[35] = line.section;
    block[36] = line.fractional ? 1 : 0;
    block[38] = 1;
    const std::int64_t count = RequiredCount(line);
    block[39] = static_cast<unsigned char>(count / 256);
    block[40] = static_cast<unsigned char>(count % 256);
    return block;
}

}  // namespace

std::int64_t RequiredCount(const RequiredLine& line) {
    const double quantity = line.quantity;
    if (!line.fractional) {
        const double pieces = std::trunc(quantity);
        // A number that 64 bits cannot hold becomes the lowest that they can.
        const auto count =
            std::fabs(pieces) < 9.2e18 ? static_cast<std::int64_t>(pieces) : INT64_MIN;
        return count == 1 ? 0 : count;
    }
    const double thousandths = quantity * 1000;
    const double whole = std::trunc(thousandths);
    return static_cast<std::int64_t>(whole) + (thousandths - whole >= 0.5 ? 1 : 0);
}

template <typename Attempt, typename AfterFailure>
void RequiredDriver::UpToTwentyTimes(Attempt attempt, AfterFailure after_failure) {
    for (int made = 1; made <= kAttempts; ++made) {
        bool worked = true;
        try {
            attempt();
        } catch (const Failed& failed) {
            worked = false;
            after_failure(failed);
        }
        if (worked && made < kAttempts) {
            return;
        }
        if (worked) {
            break;  // too late: the last attempt counts as failed
        }
    }
    throw kGaveUp;
}

unsigned RequiredDriver::TrySaleNumber() {
    unsigned number = 0;
    UpToTwentyTimes([&] { number = SaleNumber(); }, [](const Failed&) {});
    return number;
}

void RequiredDriver::SendSale(const RequiredLine& line) {
    KnowVersion();
    const Reply reply = talk_->Exchange(0x21, SaleBlock(line));
    if (reply.code != 0xC1 && reply.code != 0xC3) {
        throw Failed{Failing::protocol};
    }
    if (reply.At(0) != 0) {
        throw Failed{Failing::money};
    }
    if (ReadStatus().state != 0xA2) {
        throw Failed{Failing::other};
    }
    Reset();
    talk_->Sleep(100);
}

void RequiredDriver::TrySale(const RequiredLine& line) {
    const unsigned before = TrySaleNumber();
    unsigned after = 0;
    int made = 0;
    do {
        ++made;
        try {
            SendSale(line);
        } catch (const Failed& failed) {
            if (failed.how == Failing::money) {
                throw Failed{Failing::engine, 14};
            }
        }
        after = TrySaleNumber();
    } while (after != before + 1 && made < kAttempts);
    if (made == kAttempts) {
        throw kGaveUp;
    }
    TryTitle(after, line.name);
}

void RequiredDriver::TryTitle(unsigned sale, const std::string& title) {
    if (version_ <= 301) {
        return;
    }
    const auto index = static_cast<unsigned char>(sale - 1);
    const std::size_t pieces = std::min<std::size_t>((title.size() + 17) / 18, 4);
    UpToTwentyTimes(
        [&] {
            for (std::size_t piece = 0; piece < pieces; ++piece) {
                Payload data(20, ' ');
                data[0] = index;
                data[1] = static_cast<unsigned char>(piece);
                const std::string text = title.substr(18 * piece, 18);
                std::copy(text.begin(), text.end(), data.begin() + 2);
                Ask(0x27, data, 0x97);
            }
        },
        [](const Failed&) {});
}

void RequiredDriver::TryDiscount() {
    UpToTwentyTimes(
        [&] {
            const auto percent = static_cast<unsigned char>(check_.discount);
            if (Decode(talk_->Exchange(0x23, {percent})).state != 0xB4) {
                throw Failed{Failing::protocol};
            }
            if (ReadStatus().state != 0xC0) {
                throw Failed{Failing::other};
            }
            Reset();
        },
        [](const Failed&) {});
}

void RequiredDriver::TryType() {
    talk_->Sleep(50);
    UpToTwentyTimes(
        [&] {
            const auto type = static_cast<unsigned char>(check_.mode == 0 ? 6 : check_.mode);
            if (Ask(0x25, {type}, 0xE4).At(0) == 0) {
                throw Failed{Failing::money};
            }
            if (!WaitFor(0xC0)) {
                throw Failed{Failing::other};
            }
            Reset();
        },
        [](const Failed& failed) {
            if (failed.how == Failing::money) {
                throw Failed{Failing::engine, 20};
            }
        });
}

void RequiredDriver::TryCash() {
    KnowVersion();
    if (check_.cash == 0 || version_ < 301 || version_ > 309) {
        return;
    }
    UpToTwentyTimes(
        [&] {
            if (!WaitFor(0xC8)) {
                throw Failed{Failing::other};
            }
            const std::uint32_t cash = check_.cash;
            const Status status = Decode(talk_->Exchange(
                0x28, {0, static_cast<unsigned char>(cash >> 24U),
                       static_cast<unsigned char>(cash >> 16U),
                       static_cast<unsigned char>(cash >> 8U), static_cast<unsigned char>(cash)}));
            if (status.state != 0xE8) {
                throw Failed{Failing::protocol};
            }
            if (status.reply != 0) {
                throw Failed{Failing::money};
            }
        },
        [&](const Failed& failed) {
            if (failed.how == Failing::money) {
                throw Failed{Failing::engine, 20};
            }
            talk_->Sleep(10);
        });
}

void RequiredDriver::TryCheckOut() {
    for (int made = 0; made < 10; ++made) {
        unsigned printing_ms = 0;
        try {
            talk_->Sleep(50);
            if (WaitFor(0xC8)) {
                printing_ms = 500 * static_cast<unsigned>(check_.lines.size()) + 3000;
                Reset();
                talk_->Sleep(printing_ms);
                return;
            }
        } catch (const Failed&) {
            // Whatever it was, the attempt is over.
        }
        talk_->Sleep(printing_ms);
    }
}

void RequiredDriver::TestPrint(const Statistics& before) {
    Statistics after;
    bool read = false;
    const Micros begun = talk_->Now();
    do {
        try {
            after = ReadStatistics();
            read = true;
        } catch (const Failed&) {
            // Only the time ends the reading.
        }
    } while (!read && !talk_->TimeIsUp(begun, 30'000, 0x0A));
    if (!read) {
        throw kGaveUp;
    }
    const auto lines = static_cast<int>(check_.lines.size());
    if (after.checks == before.checks + 1 && after.records == before.records + lines) {
        return;
    }
    unsigned error = 0;
    try {
        error = RegisterError();
    } catch (const Failed&) {
        throw kGaveUp;
    }
    throw Failed{Failing::engine, error == 16 ? 5 : 32};
}

void RequiredDriver::TryUnlock() {
    try {
        UpToTwentyTimes([&] { UnlockKeyboard(); }, [](const Failed&) {});
    } catch (const Failed&) {
        // The check is printed all the same.
    }
}

}  // namespace simulation
