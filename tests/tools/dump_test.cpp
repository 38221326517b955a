// kkm dump: what it reads of a register is a memory that the register can be started with.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

#include "tools/program_fixture.h"
#include "virtual_register/memory_file.h"
#include "virtual_register/model.h"

namespace test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;
using virtual_register::load_memory;
using virtual_register::Memory;

// A register with something of everything in its memory, as it would stand in a shop.
Memory UsedMemory(int firmware) {
    virtual_register::Identity identity;
    identity.firmware = firmware;
    identity.serial = "00077003";
    identity.section = 5;
    identity.taxes[3] = 18;
    Memory memory(identity);
    memory.open_shift(1213531530);
    memory.tape_number = 300;
    memory.checks = 258;
    memory.drawer_kopecks = 0x123456789A;
    memory.set_last_error(16);
    for (int i = 0; i < 3; ++i) {
        virtual_register::TapeRecord record;
        record.check_number = static_cast<std::uint16_t>(257 + i / 2);
        record.amount_kopecks = 1999;
        record.price_kopecks = 1999;
        record.quantity_thousandths = 1000;
        memory.tape.add(record);
    }
    virtual_register::ProductBlock block{};
    block[0] = 0x80;
    block[34] = 5;
    for (int code : {1, 70, 1999}) {
        block[37] = static_cast<std::uint8_t>(code >> 8);
        block[38] = static_cast<std::uint8_t>(code);
        memory.products.restore(block);
    }
    return memory;
}

// The file without its remarks.
std::string Facts(const std::string& text) {
    std::istringstream lines(text);
    std::string facts;
    for (std::string line; std::getline(lines, line);) {
        if (line[0] != '#') {
            facts += line + '\n';
        }
    }
    return facts;
}

class DumpTest : public ProgramTest {
  protected:
    void Keep(const Memory& memory) {
        virtual_register::save_memory(memory, "till.mem", virtual_register::Durability::program);
    }
    // A register with that memory, whose line or self does what the scenario says.
    static RegisterProcess With(const std::string& scenario) {
        std::ofstream("scenario") << scenario;
        return RegisterProcess({"--memory", "till.mem", "--scenario", "scenario"});
    }
};

class EachFirmware : public DumpTest, public testing::WithParamInterface<int> {};

INSTANTIATE_TEST_SUITE_P(Firmware, EachFirmware, testing::Values(301, 302, 303, 310, 312, 400),
                         [](const auto& info) { return std::to_string(info.param); });

TEST_P(EachFirmware, GivesTheWholeMemory) {
    Keep(UsedMemory(GetParam()));
    {
        const RegisterProcess kassa({"--memory", "till.mem", "--baud", "57600", "--net", "7"});
        EXPECT_EQ(Kkm(kassa, "dump copy.mem"), 0) << output;
    }
    EXPECT_EQ(output, "file           copy.mem\nfirmware       " + std::to_string(GetParam()) +
                          "\nserial number  00077003\nRAM bytes      8192\nEEPROM bytes   16384\n"
                          "tape records   3\ngoods          3\n");
    const std::string copy = folder.Content("copy.mem");
    EXPECT_THAT(copy, StartsWith("tarvo-register memory 2\n# read at /dev/pts/"));
    EXPECT_THAT(copy, HasSubstr(", 57600 baud, network number 7\n"));
    EXPECT_EQ(Facts(copy), folder.Content("till.mem"));
    EXPECT_EQ(virtual_register::memory_to_text(load_memory("copy.mem")), Facts(copy));
}

TEST_F(DumpTest, GoesToStandardOutputAndLeavesGoodsOut) {
    Keep(UsedMemory(303));
    const RegisterProcess kassa({"--memory", "till.mem"});
    EXPECT_EQ(Kkm(kassa, "dump - --products 69 2>/dev/null"), 0);
    EXPECT_THAT(output, StartsWith("tarvo-register memory 2\n# read at "));
    EXPECT_EQ(output.find("product "), output.rfind("product ")) << "only the first is left";
    EXPECT_THAT(output, EndsWith("0001\n"));
}

TEST_F(DumpTest, AFileThatIsThereStays) {
    std::ofstream("mine") << "mine";
    const RegisterProcess kassa({});
    EXPECT_EQ(Kkm(kassa, "dump mine"), 5);
    EXPECT_EQ(output, "kkm: cannot write mine: File exists\n");
    EXPECT_EQ(folder.Content("mine"), "mine");
    EXPECT_EQ(Kkm(kassa, "dump mine --replace --products 0"), 0);
    EXPECT_THAT(folder.Content("mine"), StartsWith("tarvo-register memory 2\n"));
    EXPECT_EQ(Kkm(kassa, "dump no/mine --products 0"), 5);
    EXPECT_EQ(output, "kkm: cannot write no/mine: No such file or directory\n");
}

TEST_F(DumpTest, WhatWasDamagedOnceIsAskedAgain) {
    Keep(UsedMemory(310));
    const RegisterProcess kassa = With(
        "when read-eeprom 2-3 garble\nwhen read-ram 5 lose answer\n"
        "when statistics cut 7\nwhen read-tape 1 lose request\nwhen last-error cut 0\n");
    EXPECT_EQ(Kkm(kassa, "dump copy.mem"), 0) << output;
    EXPECT_EQ(Facts(folder.Content("copy.mem")), folder.Content("till.mem"));
}

TEST_F(DumpTest, WhatCannotBeReadIsToldAndTheRestIsKept) {
    Keep(UsedMemory(310));
    const RegisterProcess kassa = With(
        "when read-ram 4-6 lose request\nwhen read-tape 2 refuse 0\n"
        "when read-product 2-4 garble\n");
    EXPECT_EQ(Kkm(kassa, "dump copy.mem --json"), 9);
    EXPECT_THAT(output,
                HasSubstr("\"missing\": [\n    \"the working memory at 0x0040 to 0x007F\",\n"
                          "    \"1 of 3 records of the control tape: 1\",\n"
                          "    \"the goods with the codes 2\"\n  ]"));
    EXPECT_THAT(output, HasSubstr("\"ram\": 8128,"));
    EXPECT_THAT(output, HasSubstr("\"records\": 2,"));
    EXPECT_THAT(output, HasSubstr("kkm: not read: the working memory at 0x0040 to 0x007F\n"));
    const std::string copy = folder.Content("copy.mem");
    EXPECT_THAT(copy,
                HasSubstr("\n# not read: the goods with the codes 2\nregister firmware 310 "));
    EXPECT_THAT(copy, HasSubstr(" first-record 0\n"));
    const Memory whole = load_memory("till.mem");
    const Memory memory = load_memory("copy.mem");
    ASSERT_EQ(memory.tape.records().size(), 3U);
    EXPECT_EQ(memory.tape.records()[0].amount_kopecks, 1999U);
    EXPECT_EQ(memory.tape.records()[1].amount_kopecks, 0U) << "zeros stand for the gap";
    EXPECT_EQ(memory.tape.records()[2].check_number, 258);
    EXPECT_EQ(memory.serial(), "00077003");
    EXPECT_EQ(memory.products.all().size(), 3U);
    EXPECT_EQ(memory.section(), 5);
    EXPECT_TRUE(
        std::equal(memory.ram().begin() + 0x80, memory.ram().end(), whole.ram().begin() + 0x80));
}

TEST_F(DumpTest, RecordsBeforeAGapAtTheBeginningAreCounted) {
    Keep(UsedMemory(310));
    const RegisterProcess kassa = With("when read-tape 1-2 refuse 0\n");
    EXPECT_EQ(Kkm(kassa, "dump copy.mem --products 0"), 9);
    EXPECT_THAT(output, HasSubstr("not read: 2 of 3 records of the control tape: 0 to 1\n"));
    const Memory memory = load_memory("copy.mem");
    EXPECT_EQ(memory.tape.count(), 3);
    EXPECT_EQ(memory.tape.records().size(), 1U);
}

TEST_F(DumpTest, WithoutSerialNumberAndCountersTheMemoriesAreKept) {
    Keep(UsedMemory(310));
    const RegisterProcess kassa =
        With("when read-ram 1 refuse 0\nwhen statistics always lose answer\n");
    EXPECT_EQ(Kkm(kassa, "dump copy.mem --products 1"), 9);
    EXPECT_THAT(output, HasSubstr("kkm: not read: the serial number\nkkm: not read: the counters\n"
                                  "kkm: not read: how many records the control tape has\n"));
    const Memory memory = load_memory("copy.mem");
    EXPECT_EQ(memory.checks, 0);
    EXPECT_EQ(memory.tape.records().size(), 3U);
    EXPECT_EQ(memory.products.all().size(), 1U);
    EXPECT_EQ(memory.section(), 5);
}

TEST_F(DumpTest, AMemoryThatFallsSilentIsNotAskedToItsEnd) {
    Keep(UsedMemory(310));
    const RegisterProcess kassa = With("when read-ram 4-9999 lose request\n");
    EXPECT_EQ(Kkm(kassa, "dump copy.mem --products 0"), 9);
    EXPECT_THAT(output, HasSubstr("not read: the working memory at 0x0040 to 0x1FFF\n"));
    EXPECT_THAT(output, HasSubstr("EEPROM bytes   16384\n"));
}

TEST_F(DumpTest, AnOpenCheckIsToldOf) {
    Keep(UsedMemory(303));
    RegisterProcess kassa({"--memory", "till.mem"});
    kassa.Say("sell 19.99 Tea");
    kassa.Say("sell 5 Milk");
    EXPECT_EQ(Kkm(kassa, "dump copy.mem --products 0"), 0);
    EXPECT_THAT(output, HasSubstr("kkm: a check with 2 lines is open at the register; they cannot "
                                  "be read\n"));
    EXPECT_FALSE(load_memory("copy.mem").check.is_open());
}

TEST_F(DumpTest, ASilentRegisterIsStatus6) {
    Keep(UsedMemory(303));
    const RegisterProcess kassa = With("when any always lose request\n");
    EXPECT_EQ(Kkm(kassa, "dump copy.mem"), 6);
    EXPECT_THAT(output, HasSubstr("kkm: no connection to /dev/pts/"));
    EXPECT_EQ(Sh(KKM_PROGRAM " --device /nowhere/tty dump copy.mem"), 6);
    EXPECT_THAT(output, StartsWith("kkm: /nowhere/tty: No such file or directory (error 1, "));
    EXPECT_EQ(folder.Content("copy.mem"), "");
}

TEST_F(DumpTest, WithoutFirmwareOrAnythingElseThereIsNoDump) {
    Keep(UsedMemory(303));
    const RegisterProcess kassa = With(
        "when statistics always refuse 0\nwhen read-ram always refuse 0\n"
        "when read-eeprom always refuse 0\nwhen read-tape always refuse 0\n");
    EXPECT_EQ(Kkm(kassa, "dump copy.mem --products 0"), 9);
    EXPECT_THAT(output,
                HasSubstr("kkm: nothing but the firmware could be read (error 2, echDevice)"));
    const RegisterProcess unknown({"--firmware", "300"});
    EXPECT_EQ(Kkm(unknown, "dump copy.mem"), 9);
    EXPECT_THAT(output, HasSubstr("kkm: the firmware is unknown (error 3, echNoVersion)"));
    EXPECT_EQ(folder.Content("copy.mem"), "");
}

}  // namespace
}  // namespace test
