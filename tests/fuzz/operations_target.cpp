// Every operation of the protocol against whatever a line can answer. The input chooses firmware,
// network number and operation with its arguments; the rest is the line's.
#include <array>
#include <typeinfo>

#include "fuzz/hostile_line.h"
#include "fuzz/input.h"
#include "fuzz/oracle.h"
#include "protocol/tarvo.h"
#include "support/world.h"

namespace fuzz {
namespace {

// The longest text that one frame can carry behind an operation's own bytes.
constexpr std::size_t kLongText = 240;

constexpr std::array<int, 9> kVersions{0, 300, 301, 302, 303, 304, 310, 400, 999};

status_info LineOf(Input& input) {
    status_info line;
    line.name = input.Text(80);
    line.text = input.Text(40);
    line.price = input.Word32();
    line.quantity = input.Double();
    line.weighted = input.Flag();
    line.code = static_cast<std::uint16_t>(input.Word32());
    line.department = input.Byte();
    return line;
}

dbsale ProductOf(Input& input) {
    dbsale product;
    product.name = input.Text(80);
    product.text = input.Text(40);
    product.price = input.Flag() ? input.Word32() : input.Byte();
    product.code = input.Word32();
    return product;
}

void ReadTape(CTarvo& kkm, Input& input, bool retrying) {
    const auto index = static_cast<std::uint16_t>(input.Word32());
    KLSale record;
    record.number = -5;
    const bool read = retrying ? kkm.TryReadKLSale(index, record) : kkm.readKLSale(index, record);
    Require(read != (record.number == -5), "a record is filled when it was read");
}

void SaleOf(CTarvo& kkm, Input& input) {
    sale line;
    line.title = input.Text(80);
    line.barcode = input.Text(20);
    line.price = input.Word32();
    line.count = static_cast<float>(input.Int32()) / 1000;
    line.fractional = input.Flag();
    kkm.sendSaleInfo(line);
}

using Operation = void (*)(CTarvo&, Input&);

// Some operations need the address of a location that the input names.
TRamAddr Location(Input& input) {
    return static_cast<TRamAddr>(static_cast<int>(input.Choice(12)) - 1);
}

void Status(CTarvo& kkm, Input& /*input*/) {
    status_info status;
    kkm.GetStatusInfo(status);
}

const Operation kOperations[] = {
    Status,
    [](CTarvo& kkm, Input&) { kkm.getVersion(); },
    [](CTarvo& kkm, Input& in) { kkm.getKKMVersion(in.Flag()); },
    [](CTarvo& kkm, Input& in) {
        const TRamAddr location = Location(in);
        kkm.readRam(location, in.Byte());
    },
    [](CTarvo& kkm, Input&) { kkm.ReadKKMNum(); },
    [](CTarvo& kkm, Input&) { kkm._ReadKKMNum(); },
    [](CTarvo& kkm, Input&) { kkm.GenericScan(); },
    [](CTarvo& kkm, Input&) { kkm.getVersionNoSuppleer(); },
    [](CTarvo& kkm, Input& in) { kkm.getKKMVersionNoSuppleer(in.Flag()); },
    [](CTarvo& kkm, Input& in) {
        const TRamAddr location = Location(in);
        kkm.readRamNoSuppleer(location, in.Byte());
    },
    [](CTarvo& kkm, Input&) { kkm.ReadKKMNumNoSuppler(); },
    [](CTarvo& kkm, Input&) { kkm.readTime(); },
    [](CTarvo& kkm, Input& in) { kkm.writeCfgParam(cfg_host_wait, in.Byte()); },
    [](CTarvo& kkm, Input& in) { kkm.feed(in.Byte()); },
    [](CTarvo& kkm, Input& in) { kkm.writeCheckTitle(in.Text(kLongText)); },
    [](CTarvo& kkm, Input& in) { kkm.writeCheckBottom(in.Text(kLongText)); },
    [](CTarvo& kkm, Input&) { kkm.readCheckTitle(); },
    [](CTarvo& kkm, Input&) { kkm.readCheckBottom(); },
    [](CTarvo& kkm, Input&) { kkm.ReadError(); },
    [](CTarvo& kkm, Input&) { kkm.ReadSaleNumber(); },
    [](CTarvo& kkm, Input&) { kkm.ReadSaleNumberCmd(); },
    [](CTarvo& kkm, Input&) { kkm.CancelCheckOut(); },
    [](CTarvo& kkm, Input& in) {
        const auto state = static_cast<kkm_command>(in.Byte());
        kkm.waitKKMStatus(state, in.Byte());
    },
    [](CTarvo& kkm, Input&) { kkm.resetStatus(); },
    [](CTarvo& kkm, Input& in) {
        const std::string text = in.Text(80);
        kkm.resetStatusInfo(text, in.Byte(), indicator_line);
    },
    [](CTarvo& kkm, Input& in) { kkm.sendKey(static_cast<kkm_keys>(in.Byte())); },
    [](CTarvo& kkm, Input&) { kkm.lockKey(); },
    [](CTarvo& kkm, Input&) { kkm.unlockKey(); },
    [](CTarvo& kkm, Input&) { kkm.TryUnlockKey(); },
    [](CTarvo& kkm, Input& in) { kkm.sendSaleInfo(LineOf(in)); },
    SaleOf,
    [](CTarvo& kkm, Input& in) {
        const unsigned char sale = in.Byte();
        const unsigned char piece = in.Byte();
        kkm.sendSaleStr(sale, piece, in.Text(80));
    },
    [](CTarvo& kkm, Input& in) { kkm.sendWeight(in.Double()); },
    [](CTarvo& kkm, Input& in) { kkm.sendDiscount(static_cast<std::int8_t>(in.Byte())); },
    [](CTarvo& kkm, Input& in) {
        const unsigned char kind = in.Byte();
        kkm.sendDiscountCard(kind, in.Text(kLongText));
    },
    [](CTarvo& kkm, Input& in) { kkm.sendCash(in.Word32()); },
    [](CTarvo& kkm, Input& in) { kkm.outCheck(static_cast<kkm_check>(in.Byte())); },
    [](CTarvo& kkm, Input&) { kkm.sendQuerySale(); },
    [](CTarvo& kkm, Input&) { kkm.ClearCheck(); },
    [](CTarvo& kkm, Input& in) { kkm.writeDBSale(ProductOf(in)); },
    [](CTarvo& kkm, Input& in) { kkm.readDbsale(static_cast<std::uint16_t>(in.Word32())); },
    [](CTarvo& kkm, Input& in) {
        const std::uint32_t address = in.Word32();
        kkm.readEprom(address, in.Byte());
    },
    [](CTarvo& kkm, Input&) {
        TStatistics statistics;
        kkm.GetStatistics(statistics);
    },
    [](CTarvo& kkm, Input& in) { ReadTape(kkm, in, false); },
    [](CTarvo& kkm, Input& in) { ReadTape(kkm, in, true); },
    [](CTarvo& kkm, Input&) { kkm.getNICurrent(); },
    [](CTarvo& kkm, Input& in) { kkm.getCashSum(in.Int32()); },
    [](CTarvo& kkm, Input&) { kkm.readKLbegin(); },
    [](CTarvo& kkm, Input& in) {
        const std::string text = in.Text(80);
        kkm.showInfo(text, in.Byte(), indicator_line);
    },
    [](CTarvo& kkm, Input& in) {
        const bool wide = in.Flag();
        const unsigned char value = in.Byte();
        kkm.printStr(wide, value, in.Text(80));
    },
};

// An operation may fail with the exceptions of its layers only.
void Perform(CTarvo& kkm, Operation operation, Input& input) {
    try {
        operation(kkm, input);
    } catch (const ETarvo& e) {
        Require(e.code() >= 2 && e.code() <= 7 && e.code() != 3, "a protocol error has its code");
    } catch (const EMiniCom& e) {
        Require(e.code <= errWriteFile, "a port error has its code");
    } catch (const std::exception& e) {
        Require(typeid(e) == typeid(std::exception), "only a refused length has no code");
    }
}

void RunOperations(Input& input) {
    test::World& world = test::World::Get();
    world.Reset();
    world.SetLogging(false);
    HostileLine line(input);
    world.Attach("/dev/ttyS0", &line);

    CMiniCom port;
    CTarvo kkm(&port);
    port.Open(1);
    kkm.InitCom(input.Flag() ? baud_57600 : baud_9600);
    kkm.setVersion(static_cast<kkm_ver>(kVersions[input.Choice(kVersions.size())]));
    const std::uint8_t net_num = input.Choice(4) == 0 ? input.Byte() : std::uint8_t{0};
    kkm.setNetNum(net_num);
    line.ExpectNetNum(net_num);
    kkm.setTrace(input.Flag(), "TarvoM5.log");
    for (int i = 0; i < 4 && (i == 0 || !input.Exhausted()); ++i) {
        Perform(kkm, kOperations[input.Choice(std::size(kOperations))], input);
    }
}

}  // namespace
}  // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    fuzz::RunOperations(input);
    return 0;
}
