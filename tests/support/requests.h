// The request bytes by name.
#pragma once

namespace test::request {

constexpr unsigned char kEprom = 0x02;
constexpr unsigned char kClearCheck = 0x03;
constexpr unsigned char kRam = 0x04;
constexpr unsigned char kShowInfo = 0x07;
constexpr unsigned char kReadProduct = 0x08;
constexpr unsigned char kWriteProduct = 0x09;
constexpr unsigned char kStatistics = 0x0A;
constexpr unsigned char kConfig = 0x0B;
constexpr unsigned char kLock = 0x10;
constexpr unsigned char kReadTape = 0x12;
constexpr unsigned char kSerial = 0x15;
constexpr unsigned char kStatus = 0x20;
constexpr unsigned char kSale = 0x21;
constexpr unsigned char kDiscount = 0x23;
constexpr unsigned char kCard = 0x24;
constexpr unsigned char kCheckOut = 0x25;
constexpr unsigned char kWeight = 0x26;
constexpr unsigned char kTitle = 0x27;
constexpr unsigned char kCash = 0x28;
constexpr unsigned char kKey = 0x29;
constexpr unsigned char kFeed = 0x30;
constexpr unsigned char kVersion = 0x34;
constexpr unsigned char kQuery = 0x35;
constexpr unsigned char kLockSwitch = 0x36;
constexpr unsigned char kSaleNumber = 0x37;
constexpr unsigned char kError = 0x38;
constexpr unsigned char kResetInfo = 0x7E;
constexpr unsigned char kReset = 0x7F;

}  // namespace test::request
