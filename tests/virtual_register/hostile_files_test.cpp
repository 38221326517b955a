// Files that somebody edited badly: they are taken or refused with a word, and nothing else
// happens.
#include <gtest/gtest.h>

#include "bench.h"
#include "virtual_register/memory_file.h"
#include "virtual_register/recording.h"
#include "virtual_register/scenario.h"

namespace virtual_register {
namespace {

// A plain linear congruence: the same run on every machine.
class Spoiler {
  public:
    std::size_t below(std::size_t limit) {
        state_ = state_ * 1664525U + 1013904223U;
        return (state_ >> 8) % limit;
    }

  private:
    std::uint32_t state_ = 2026;
};

// A few characters replaced, put in, taken out or repeated.
std::string spoilt(std::string text, Spoiler& spoiler) {
    constexpr std::string_view kCharacters = "0123456789ABCDEF -.#;\nxs\xFF";
    for (std::size_t i = 0; i <= spoiler.below(3); ++i) {
        const std::size_t at = spoiler.below(text.size());
        const char character = kCharacters[spoiler.below(kCharacters.size())];
        switch (spoiler.below(4)) {
            case 0:
                text[at] = character;
                break;
            case 1:
                text.insert(at, 1, character);
                break;
            case 2:
                text.erase(at, 1 + spoiler.below(3));
                break;
            default:
                text.insert(at, text.substr(spoiler.below(text.size()), spoiler.below(40)));
                break;
        }
    }
    return text;
}

// How many of so many spoilt texts are taken; the others must be refused by `Error`.
template <typename Error, typename Take>
int taken(const std::string& text, int times, Take take) {
    Spoiler spoiler;
    int good = 0;
    for (int i = 0; i < times; ++i) {
        const std::string bad = spoilt(text, spoiler);
        try {
            take(bad);
            ++good;
        } catch (const Error&) {
            continue;
        } catch (const std::exception& error) {
            ADD_FAILURE() << error.what() << " for\n" << bad;
        }
    }
    return good;
}

TEST(HostileFiles, MemoriesAreTakenOrRefused) {
    Bench bench(310);
    bench.print_check(2);
    bench.send(0x21, Bench::sale("Cheese", {5, 0, 0}, 250, true));
    bench.send(0x24, {1, 2, 3, '9', '9', 0});
    bench.send(0x25, {6});
    const int good =
        taken<MemoryFileError>(memory_to_text(bench.model.memory()), 4000, [](const auto& text) {
            Bench revived;
            revived.model = Model(memory_from_text(text));
            for (int command : {0x20, 0x0A, 0x25, 0x7F, 0x7F, 0x20}) {
                revived.send(command, command == 0x25 ? std::vector<int>{6} : std::vector<int>());
            }
            revived.send(0x12, {0, 0});
            revived.model.close_shift();
            memory_from_text(memory_to_text(revived.model.memory()));
        });
    EXPECT_GT(good, 100);
    EXPECT_LT(good, 3900);
}

TEST(HostileFiles, RecordingsAreTakenOrRefused) {
    const std::string text =
        "tarvo-register recording 1\nline baud 57600\n0.250113 -> 0003003434  ; version\n"
        "0.251113 <- 000501B40302BA\n1.000000 -> 0003002020\n1.000001 <- 000301A0A1\n";
    const int good =
        taken<RecordingError>(text, 4000, [](const auto& bad) { read_recording(bad); });
    EXPECT_GT(good, 100);
    EXPECT_LT(good, 3900);
}

TEST(HostileFiles, ScenariosAreTakenOrRefused) {
    const std::string text =
        "when sale 2-3 lose answer # why\nwhen any always delay 1.5s\nat 2s sell 19.99 Milk\n"
        "when close-check then paper in 4\nwhen 0x7F 3 garble 7\n";
    const int good = taken<ScenarioError>(text, 4000, [](const auto& bad) {
        Scenario scenario(bad);
        Model model(memory_of(303));
        Request request;
        request.command = 0x20;
        for (std::int64_t now_us = 0; now_us < 5000000; now_us += 500000) {
            scenario.handle(model, request, now_us);
        }
    });
    EXPECT_GT(good, 100);
    EXPECT_LT(good, 3900);
}

}  // namespace
}  // namespace virtual_register
