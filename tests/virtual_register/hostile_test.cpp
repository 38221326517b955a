// Any request in any order, with a cashier who does anything at any time.
#include <gtest/gtest.h>

#include "bench.h"
#include "virtual_register/memory_file.h"

namespace virtual_register {
namespace {

// A plain linear congruence: the same run on every machine.
class Dice {
  public:
    explicit Dice(std::uint32_t seed) : state_(seed) {}
    int below(int limit) {
        state_ = state_ * 1664525U + 1013904223U;
        return static_cast<int>((state_ >> 8) % static_cast<std::uint32_t>(limit));
    }

  private:
    std::uint32_t state_;
};

void cashier_acts(Bench& bench, Dice& dice) {
    Model& model = bench.model;
    switch (dice.below(16)) {
        case 0:
            model.ask_host();
            return;
        case 1:
            model.ask_host_by_barcode(std::string(static_cast<std::size_t>(dice.below(60)), '7'));
            return;
        case 2:
            model.cancel();
            return;
        case 3:
            model.enter_line(SaleLine{});
            return;
        case 4:
            model.enter_free_line(SaleLine{});
            return;
        case 5:
            model.delete_last_line();
            return;
        case 6:
            model.enter_discount(dice.below(300) - 150);
            return;
        case 7:
            model.ask_weight();
            return;
        case 8:
            model.close_shift();
            return;
        case 9:
            model.paper_out();
            return;
        case 10:
            model.paper_in(static_cast<std::size_t>(dice.below(40)));
            return;
        case 11:
            model.power_off();
            model.power_on();
            return;
        case 12:
            model.set_states_late(static_cast<unsigned>(dice.below(3)));
            return;
        case 13:
            model.refuse(Command::sale, static_cast<unsigned>(dice.below(3)), 9);
            return;
        default:
            model.press(static_cast<std::uint8_t>(dice.below(50)));
            return;
    }
}

std::vector<int> any_payload(int command, Dice& dice) {
    if (command == 0x21 && dice.below(8) != 0) {
        return Bench::sale("Milk", {dice.below(10), dice.below(10)}, dice.below(5));
    }
    std::size_t length = static_cast<std::size_t>(dice.below(64));
    if (const CommandRow* row = find_command(static_cast<std::uint8_t>(command))) {
        length = row->payload_min;
    }
    std::vector<int> payload(length);
    for (int& byte : payload) {
        byte = dice.below(2) == 0 ? dice.below(256) : dice.below(8);
    }
    return payload;
}

TEST(HostileHost, TheBooksAgreeWhateverComes) {
    constexpr int kUsual[] = {0x21, 0x21, 0x7F, 0x7F, 0x7F, 0x25, 0x25, 0x20, 0x29, 0x28};
    for (int firmware : {301, 302, 303, 310, 400}) {
        Dice dice(static_cast<std::uint32_t>(firmware));
        Bench bench(firmware);
        for (int i = 0; i < 50000; ++i) {
            if (dice.below(6) == 0) {
                cashier_acts(bench, dice);
            }
            const int command = dice.below(3) != 0 ? kUsual[dice.below(10)] : dice.below(256);
            bench.send(command, any_payload(command, dice));
            const Memory& memory = bench.model.memory();
            ASSERT_EQ(bench.model.checks_registered(), bench.model.printed().size());
            ASSERT_GE(memory.drawer_kopecks, 0);
            ASSERT_LE(memory.check.lines.size(), memory.firmware().check_lines_max);
            ASSERT_TRUE(memory.check.is_open() || memory.check.stage == OpenCheck::Stage::lines);
            ASSERT_LE(memory.check.total_kopecks(), std::int64_t{UINT32_MAX});
        }
        EXPECT_GT(bench.model.checks_registered(), 100u) << firmware;
        const Memory& memory = bench.model.memory();
        EXPECT_EQ(memory_to_text(memory), memory_to_text(memory_from_text(memory_to_text(memory))));
    }
}

}  // namespace
}  // namespace virtual_register
