#include "virtual_register/memory_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>

#include "bench.h"

namespace virtual_register {
namespace {

std::vector<int> any_product() {
    std::vector<int> block(39, 0x21);
    for (std::size_t i = 28; i < 35; ++i) {
        block[i] = 1;
    }
    return block;
}

// A register with something of everything in its memory.
Bench rich_bench() {
    Bench bench(310);
    bench.send(0x21, Bench::sale("Milk", {1, 9, 9, 9}, 3));
    bench.send(0x27, std::vector<int>(20, 0));
    bench.send(0x24, {1, 2, 3, '9', '9', 0});
    bench.send(0x23, {0xF6});
    bench.reset();
    bench.send(0x25, {6});
    bench.reset();
    bench.reset();
    bench.send(0x09, any_product());
    bench.send(0x0B, {7, 1});
    bench.send(0x21, Bench::sale("Cheese", {5, 0, 0}, 250, true));
    bench.send(0x25, {2});
    bench.model.paper_out();
    bench.send(0x31, std::vector<int>(19, 'x'));
    return bench;
}

TEST(MemoryFile, KeepsEverything) {
    const Bench bench = rich_bench();
    const std::string text = memory_to_text(bench.model.memory());
    const Memory memory = memory_from_text(text);
    EXPECT_EQ(text, memory_to_text(memory));
    EXPECT_EQ(310, memory.firmware().number);
    EXPECT_EQ(1, memory.checks);
    EXPECT_EQ(1, memory.tape.count());
    EXPECT_EQ(16, memory.last_error());
    EXPECT_EQ(1, memory.parameter(7));
    EXPECT_TRUE(memory.shift_is_open());
    EXPECT_EQ(1u, memory.products.all().size());
    ASSERT_EQ(1u, memory.check.lines.size());
    EXPECT_EQ("Cheese", memory.check.lines[0].printed_name());
    EXPECT_EQ(OpenCheck::Stage::closed, memory.check.stage);
    EXPECT_EQ(CheckType::credit, memory.check.type);
    ASSERT_TRUE(memory.last_check.has_value());
    EXPECT_EQ(-10, memory.last_check->discount_percent);
    EXPECT_EQ("99", memory.last_check->card_number.text());
    EXPECT_EQ(5397u, memory.last_check->total_kopecks);
    EXPECT_EQ(105397, memory.drawer_kopecks);
}

TEST(MemoryFile, ARegisterGoesOnWhereItStopped) {
    Bench bench;
    bench.model = Model(memory_from_text(memory_to_text(rich_bench().model.memory())));
    EXPECT_EQ((Reply{0xCB, 0, 1, 0, 1, 0}), bench.status());
    EXPECT_EQ((Reply{0x84, 1}), bench.send(0x04, {0x09, 0x14, 1}));
    bench.send(0x25, {6});
    bench.reset();
    bench.reset();
    EXPECT_EQ((Reply{0x8A, 0, 1, 0, 2, 0, 2, 0x00, 0x00, 0x01, 0x9C, 0x32}), bench.send(0x0A));
}

TEST(MemoryFile, AFileMadeByHandNeedsOnlyItsHead) {
    const Memory memory = memory_from_text(
        "tarvo-register memory 1\n"
        "register firmware 303 serial 3939 error 16\n"
        "counters tape 9 checks 65535 drawer 5 first-record 65530\n"
        "eeprom 0012 03\n");
    EXPECT_EQ(9, memory.tape_number);
    EXPECT_EQ(65535, memory.checks);
    EXPECT_EQ(65530, memory.tape.count());
    EXPECT_EQ(5, memory.drawer_kopecks);
    EXPECT_EQ(4, memory.section());
    EXPECT_EQ((AnswerPayload{'9', '9', ' '}), memory.read_ram(0x1A5D, 3));
    EXPECT_EQ((AnswerPayload{16}), memory.read_ram(0x1956, 1));
}

TEST(MemoryFile, WhatIsWrongIsToldWithItsLine) {
    const std::string head = "tarvo-register memory 1\nregister firmware 303 serial 39 error 0\n";
    const std::vector<std::pair<std::string, std::string>> wrong{
        {"", "line 1: not a register's memory"},
        {"tarvo-register memory\n", "line 1: not a register's memory"},
        {"tarvo-register memory 1x\n", "line 1: not a register's memory"},
        {"tarvo-register paper 1\n", "line 1: not a register's memory"},
        {"tarvo-register memory 0\n",
         "line 1: a memory of version 0; this program reads versions 1 to 2"},
        {"tarvo-register memory 3\n",
         "line 1: a memory of version 3; this program reads versions 1 to 2"},
        {"tarvo-register memory 2\n# why\n\nregister firmware 303 serial 39\n",
         "line 4: \"error\" is missing"},
        {"tarvo-register memory 1\nregister firmware 304 serial 39 error 0\n",
         "line 2: no such firmware: 304"},
        {head + "nonsense 1\n", "line 3: \"nonsense\" is not expected here"},
        {head + "\ntape 00\n", "line 4: a tape record has 31 bytes"},
        {head + "product 00\n", "line 3: a product record has 39 bytes"},
        {head + "ram 1FFF 0000\n", "line 3: an address is past the end of the memory"},
        {head + "ram 1F 00\n", "line 3: an address has four digits"},
        {head + "counters tape x\n", "line 3: \"tape x\" is no number from 0 to 65535"},
        {head + "counters tape 1\n", "line 3: \"checks\" is missing"},
        {head + "last-line name 41\n", "line 3: \"last-line\" is not expected here"},
    };
    for (const auto& [text, said] : wrong) {
        try {
            memory_from_text(text);
            ADD_FAILURE() << said;
        } catch (const MemoryFileError& error) {
            EXPECT_EQ(said, error.what());
        }
    }
}

// What the tape of a register with one line of 19.99 is made of, digits of the barcode left out.
constexpr const char* kTapeWithoutDigits =
    "tape 0001000007CF0007CF000000000000000000000000000001020003E8000000\n";

TEST(MemoryFile, ATapeRecordWithoutBarcodeDigitsIsWhole) {
    Memory memory = memory_of(303);
    TapeRecord record;
    record.check_number = 1;
    record.amount_kopecks = 1999;
    record.price_kopecks = 1999;
    record.code = 1;
    record.department = 2;
    record.quantity_thousandths = 1000;
    memory.tape.add(record);
    const std::string text = memory_to_text(memory);
    EXPECT_NE(std::string::npos, text.find(kTapeWithoutDigits)) << text;
    EXPECT_EQ(1u, memory_from_text(text).tape.count());
}

TEST(MemoryFile, AnEarlierVersionIsTakenAndWrittenAsThePresentOne) {
    const std::string head =
        " 1\nregister firmware 303 serial 39 error 0\n"
        "counters tape 1 checks 1 drawer 0 first-record 0\n";
    // 26 bytes: the place of the digits was left out.
    const std::string tape = "tape 0001000007CF0007CF00000000000000000001020003E8000000\n";
    const std::string text =
        memory_to_text(memory_from_text("tarvo-register memory" + head + tape));
    EXPECT_EQ(0u, text.find("tarvo-register memory 2\n"));
    EXPECT_NE(std::string::npos, text.find(kTapeWithoutDigits)) << text;
    EXPECT_THROW(memory_from_text("tarvo-register memory 2" + head.substr(2) + tape),
                 MemoryFileError);
}

TEST(MemoryFile, RemarksAreLeftOut) {
    const std::string text = memory_to_text(memory_of(303));
    const std::size_t second = text.find('\n') + 1;
    EXPECT_EQ(text, memory_to_text(memory_from_text(text.substr(0, second) + "# of the till\n" +
                                                    text.substr(second) + "# end\n")));
}

TEST(MemoryFile, MoreLinesThanAnOldCheckHoldsAreRefused) {
    Bench bench(303);
    for (int i = 0; i < 20; ++i) {
        bench.sell();
    }
    std::string text = memory_to_text(bench.model.memory());
    EXPECT_NO_THROW(memory_from_text(text));
    text.replace(text.find("303"), 3, "302");
    EXPECT_THROW(memory_from_text(text), MemoryFileError);
}

class MemoryFileOnDisk : public testing::Test {
  protected:
    void SetUp() override {
        char name[] = "/tmp/register_memory_XXXXXX";
        ASSERT_NE(nullptr, ::mkdtemp(name));
        folder = name;
    }
    void TearDown() override {
        std::remove((folder + "/memory").c_str());
        std::remove((folder + "/memory.new").c_str());
        ::rmdir(folder.c_str());
    }
    std::string folder;
};

TEST_F(MemoryFileOnDisk, IsReplacedAsAWhole) {
    const std::string path = folder + "/memory";
    EXPECT_FALSE(memory_file_exists(path));
    Bench bench = rich_bench();
    save_memory(bench.model.memory(), path, Durability::disk);
    bench.model.memory().checks = 77;
    save_memory(bench.model.memory(), path, Durability::disk);
    EXPECT_TRUE(memory_file_exists(path));
    EXPECT_FALSE(memory_file_exists(path + ".new"));
    EXPECT_EQ(77, load_memory(path).checks);
}

TEST_F(MemoryFileOnDisk, AFolderThatIsNotThereIsSaid) {
    const std::string path = folder + "/nowhere/memory";
    EXPECT_THROW(save_memory(memory_of(303), path, Durability::disk), MemoryFileError);
    EXPECT_THROW(load_memory(path), MemoryFileError);
}

TEST_F(MemoryFileOnDisk, ADamagedFileIsSaidWithItsPath) {
    const std::string path = folder + "/memory";
    std::ofstream(path) << "tarvo-register memory 1\n";
    try {
        load_memory(path);
        ADD_FAILURE();
    } catch (const MemoryFileError& error) {
        EXPECT_EQ(path + ", line 2: \"firmware\" is missing", error.what());
    }
}

}  // namespace
}  // namespace virtual_register
