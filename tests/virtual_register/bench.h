// A register on the test bench: requests as bytes, answers as bytes, time at hand.
#pragma once

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "virtual_register/model.h"

namespace virtual_register {

using Reply = std::vector<int>;  // answer code, then the payload; empty for silence

inline Memory memory_of(int firmware) {
    Identity identity;
    identity.firmware = firmware;
    return Memory(identity);
}

class Bench {
  public:
    explicit Bench(int firmware = 303, const Settings& settings = {})
        : model(memory_of(firmware), settings) {}

    Reply send(int command, const std::vector<int>& payload = {}, int net_number = 0) {
        Request request;
        request.net_number = static_cast<std::uint8_t>(net_number);
        request.command = static_cast<std::uint8_t>(command);
        for (int byte : payload) {
            request.payload.add(static_cast<std::uint8_t>(byte));
        }
        const auto answer = model.handle(request, now_us);
        Reply reply;
        if (answer) {
            reply.push_back(answer->code);
            reply.insert(reply.end(), answer->payload.begin(), answer->payload.end());
        }
        return reply;
    }
    Reply status() { return send(0x20); }
    int state() { return status().at(0); }
    void reset() { send(0x7F); }

    // A sale as its 41 bytes; the price comes as its decimal digits.
    static std::vector<int> sale(std::string_view name, const std::vector<int>& price_digits,
                                 int count, bool weighed = false) {
        std::vector<int> block(41, 0);
        for (std::size_t i = 0; i < 15; ++i) {
            block[i] = i < name.size() ? static_cast<std::uint8_t>(name[i]) : 0x20;
        }
        constexpr std::string_view kBarcode = "1234567890123";
        std::copy(kBarcode.begin(), kBarcode.end(), block.begin() + 15);
        for (std::size_t i = 0; i < price_digits.size(); ++i) {
            block[35 - price_digits.size() + i] = price_digits[i];
        }
        block[35] = 2;
        block[36] = weighed ? 1 : 0;
        block[38] = 1;
        block[39] = count / 256;
        block[40] = count % 256;
        return block;
    }
    // One line of 3 x 19.99.
    void sell() { send(0x21, sale("Milk", {1, 9, 9, 9}, 3)); }
    // The line, and the check closed as `type`, up to the check-out.
    void go_to_check_out(int type = 6) {
        sell();
        reset();
        send(0x25, {type});
        reset();
    }
    void print_check(int type = 6) {
        go_to_check_out(type);
        reset();
    }

    Model model;
    std::int64_t now_us = 0;
};

}  // namespace virtual_register
