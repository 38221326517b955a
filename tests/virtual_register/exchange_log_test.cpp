#include "virtual_register/exchange_log.h"

#include <gtest/gtest.h>

#include "bench.h"

namespace virtual_register {
namespace {

Request request(int command, const std::vector<int>& payload = {}) {
    Request made;
    made.command = static_cast<std::uint8_t>(command);
    for (int byte : payload) {
        made.payload.add(static_cast<std::uint8_t>(byte));
    }
    return made;
}

std::string told(int command, const std::vector<int>& payload = {}) {
    return describe(request(command, payload));
}

std::string answered(Bench& bench, const Request& asked) {
    return describe(*bench.model.handle(asked, 0), asked);
}

TEST(ExchangeLog, RequestsAreToldInWords) {
    EXPECT_EQ("status", told(0x20));
    EXPECT_EQ("sale \"Milk\" barcode 1234567890123 price 19.99 x 3 department 2 code 1",
              told(0x21, Bench::sale("Milk", {1, 9, 9, 9}, 3)));
    EXPECT_EQ("sale \"Tea\" barcode 1234567890123 price 5.00 x 0.250 kg department 2 code 1",
              told(0x21, Bench::sale("Tea", {5, 0, 0}, 250, true)));
    EXPECT_EQ("discount -10%", told(0x23, {0xF6}));
    EXPECT_EQ("discount card kind 0 number \"\"", told(0x24, {1, 0, 0}));
    EXPECT_EQ("close check type 6", told(0x25, {6}));
    EXPECT_EQ("cash 500.00", told(0x28, {0, 0, 0, 0xC3, 0x50}));
    EXPECT_EQ("key 0x0020 (clear)", told(0x29, {0x20}));
    EXPECT_EQ("key 0x0028 (cancel)", told(0x29, {0x28}));
    EXPECT_EQ("key 0x002B (copy)", told(0x29, {0x2B}));
    EXPECT_EQ("key 0x0000", told(0x29, {0}));
    EXPECT_EQ("lock switch lock", told(0x36, {0}));
    EXPECT_EQ("lock switch unlock", told(0x36, {1}));
    EXPECT_EQ("write parameter 7 = 1", told(0x0B, {7, 1}));
    EXPECT_EQ("read ram 0x1956 count 1", told(0x04, {0x19, 0x56, 1}));
    EXPECT_EQ("read eeprom 0x0012 count 1", told(0x02, {0x00, 0x12, 1}));
    EXPECT_EQ("read eeprom 0x0012 count 1", told(0x02, {0, 0, 0x00, 0x12, 1}));
    EXPECT_EQ("read tape 258", told(0x12, {1, 2}));
    EXPECT_EQ("feed 40", told(0x30, {40}));
    EXPECT_EQ("print wide line \"AAAAAAA\"", told(0x32, {0, 65, 65, 65, 65, 65, 65, 65, 0, 0}));
    EXPECT_EQ("show text \"AAAAAAAAAAAAAAAA\" value 65 mode 65",
              told(0x07, std::vector<int>(18, 65)));
}

TEST(ExchangeLog, WhatHasNoWordsIsShownAsBytes) {
    EXPECT_EQ("unknown 0x0099 01 0A", told(0x99, {1, 10}));
    EXPECT_EQ("close check", told(0x25));
    EXPECT_EQ("sale 41", told(0x21, {65}));
    EXPECT_EQ("weight 01 02 03 04 05 06", told(0x26, {1, 2, 3, 4, 5, 6}));
}

TEST(ExchangeLog, AnswersAreToldByWhatWasAsked) {
    Bench bench;
    EXPECT_EQ("version answered 3.2", answered(bench, request(0x34)));
    EXPECT_EQ("switched on, 00 01 00 00 00", answered(bench, request(0x20)));
    EXPECT_EQ("sale answered taken",
              answered(bench, request(0x21, Bench::sale("Milk", {1, 9, 9, 9}, 3))));
    EXPECT_EQ("line added, sale 0 \"Milk\" price 19.99 x 3", answered(bench, request(0x20)));
    EXPECT_EQ("close check answered refused", answered(bench, request(0x25, {9})));
    EXPECT_EQ("close check answered closed", answered(bench, request(0x25, {6})));
    EXPECT_EQ("reset status answered", answered(bench, request(0x7F)));
    EXPECT_EQ("check-out, type 6, lines 1, to pay 59.97", answered(bench, request(0x20)));
    EXPECT_EQ("cash answered refused: 1", answered(bench, request(0x28, {0, 0, 0, 0, 1})));
    EXPECT_EQ("reset status answered", answered(bench, request(0x7F)));
    EXPECT_EQ("statistics answered tape 1, checks 1, records 1, drawer 1059.97",
              answered(bench, request(0x0A)));
    EXPECT_EQ("read tape answered check 1 line 0 sum 59.97 kind 0",
              answered(bench, request(0x12, {0, 0})));
    EXPECT_EQ("read tape answered no such record", answered(bench, request(0x12, {0, 1})));
    EXPECT_EQ("read ram answered 00", answered(bench, request(0x04, {0x19, 0x56, 1})));
}

TEST(ExchangeLog, TimeHasMilliseconds) {
    EXPECT_EQ("12:05:30.000", time_of_day(1213531530, 0));
    EXPECT_EQ("12:05:31.250", time_of_day(1213531530, 1250999));
}

TEST(ExchangeLog, EveryStateHasAName) {
    int named = 0;
    for (int code = 0; code < 256; ++code) {
        named += state_name(static_cast<std::uint8_t>(code)) != nullptr ? 1 : 0;
    }
    EXPECT_EQ(16, named);
    EXPECT_STREQ("check-out", state_name(0xC8));
    EXPECT_EQ(nullptr, state_name(0xC7));
}

TEST(ExchangeLog, HostileRequestsAreToldWithoutHarm) {
    for (int command = 0; command < 256; ++command) {
        for (std::size_t length = 0; length < 64; ++length) {
            EXPECT_FALSE(told(command, std::vector<int>(length, 0xFF)).empty());
            Answer answer;
            answer.code = static_cast<std::uint8_t>(command);
            for (std::size_t i = 0; i < length; ++i) {
                answer.payload.add(0xFF);
            }
            EXPECT_FALSE(describe(answer, request(command)).empty());
            EXPECT_FALSE(describe(answer, request(0x20)).empty());
        }
    }
}

}  // namespace
}  // namespace virtual_register
