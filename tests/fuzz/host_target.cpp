// A host program of the input's making: the exported functions in any order with any arguments,
// against whatever the line answers. Calls and answers come out of the same bytes, in the order in
// which they are needed.
//
// PrintCheck has no bound of its own while the register does not answer. When the input is used up
// the line is dead, and the stop flag ends that loop as a host's callback would. With no port open
// nothing could end it, so it is called on an open one only.
#include <cstring>
#include <memory>
#include <new>
#include <stdexcept>

#include "VeskTarvoM5/VeskTarvoM5.h"
#include "fuzz/host_arguments.h"
#include "fuzz/hostile_line.h"
#include "fuzz/oracle.h"
#include "interface/vesk.h"
#include "support/world.h"

namespace fuzz {
namespace {

constexpr int kMostCalls = 200;

bool IsCodeOfTable(int code) {
    switch (code) {
        case 0:
        case 1:
        case 2:
        case 3:
        case 5:
        case 6:
        case 10:
        case 11:
        case 12:
        case 14:
        case 15:
        case 17:
        case 19:
        case 20:
        case 32:
        case 34:
        case 71:
            return true;
        default:
            return false;
    }
}

// --- callbacks of the host

void OnError(int code, char* text) {
    Require(code != 0 && IsCodeOfTable(code), "the error callback gets a code of the table");
    Require(text == nullptr, "the error callback gets no text");
}
void OnErrorThrowing(int code, char* text) {
    OnError(code, text);
    throw std::runtime_error("host");
}
void OnQuery() {}
void OnQueryThrowing() {
    throw std::runtime_error("host");
}
void OnPrepare(unsigned char step) {
    Require(step == 0 || step == 100, "a check starts and closes");
}
void OnPrepareThrowing(unsigned char step) {
    OnPrepare(step);
    throw 1;
}

void ChooseCallbacks(Input& input) {
    const unsigned choice = input.Byte();
    EventErrorProc = (choice & 1U) == 0 ? nullptr : (choice & 2U) == 0 ? OnError : OnErrorThrowing;
    EventQuery = (choice & 4U) == 0 ? nullptr : (choice & 8U) == 0 ? OnQuery : OnQueryThrowing;
    EventCheckPrepare = (choice & 16U) == 0   ? nullptr
                        : (choice & 32U) == 0 ? OnPrepare
                                              : OnPrepareThrowing;
}

// --- what holds after every call

void JudgeError() {
    Require(IsCodeOfTable(GetErrorCode()), "the last error is a code of the table");
    Require(GetErrorMsg() == nullptr, "errors have no texts");
    Note(GetErrorCode());
}

void JudgeFlag(int result) {
    JudgeError();
    Require(result == (GetErrorCode() == 0 ? 1 : 0), "the result is the success flag");
}

template <typename Value, typename Query>
void Ask(Input& input, Query query) {
    Output<Value> to(input);
    const int result = query(to.Pointer());
    JudgeFlag(result);
    Require(result == 1 || to.Untouched(), "an output is written on success only");
    Require(!to.IsNull() || GetErrorCode() == 12, "a null pointer is refused");
    Note(to.Get());
}

// --- the calls

void CallAddSale(Input& input) {
    AnyText name(input);
    const double price = AnyDouble(input);
    const double quantity = AnyDouble(input);
    const int section = AnyInt(input);
    const int before = cbGetSalesCount();
    const int result = cbAddSale(name.Pointer(), price, quantity, section);
    JudgeFlag(result);
    Require(cbGetSalesCount() == before + result, "a line is added on success only");
}

// A line that nobody can refuse, so that checks come about at all.
void CallAddGoodSale(Input& input) {
    char name[80] = "goods";
    std::memset(name, 'x', input.Choice(sizeof name));
    const double price = 1 + input.Byte();
    const double quantity = 1 + input.Byte() * 0.25;
    JudgeFlag(cbAddSale(name, price, quantity, 1));
}

void CallGetSale(Input& input) {
    char buffer[128] = "";
    char* name = input.Choice(16) == 15 ? nullptr : buffer;
    Output<double> price(input);
    Output<double> quantity(input);
    Output<int> section(input);
    const int index = AnyInt(input);
    const int result = cbGetSale(index, input.Choice(16) == 15 ? nullptr : &name, price.Pointer(),
                                 quantity.Pointer(), section.Pointer());
    JudgeFlag(result);
    Require(result == 0 || (index >= 1 && index <= cbGetSalesCount()), "a line has its index");
    Require(result == 1 || (price.Untouched() && section.Untouched()), "nothing but on success");
}

void CallDeleteSale(Input& input) {
    const int before = cbGetSalesCount();
    const int result = cbDeleteSale(AnyInt(input));
    JudgeFlag(result);
    Require(cbGetSalesCount() == before - result, "a line is deleted on success only");
}

void CallSetCash(Input& input) {
    const int before = GetErrorCode();
    try {
        Require(cbSetCash(AnyDouble(input)) == 1, "cash is taken");
    } catch (const std::exception&) {
        // The one function that lets an exception out.
    }
    Require(GetErrorCode() == before, "cash leaves the last error alone");
}

void CallReadSale(Input& input) {
    Output<unsigned char> bytes[7] = {Output<unsigned char>(input), Output<unsigned char>(input),
                                      Output<unsigned char>(input), Output<unsigned char>(input),
                                      Output<unsigned char>(input), Output<unsigned char>(input),
                                      Output<unsigned char>(input)};
    Output<double> doubles[6] = {Output<double>(input), Output<double>(input),
                                 Output<double>(input), Output<double>(input),
                                 Output<double>(input), Output<double>(input)};
    Output<unsigned short> code(input);
    const int result = ReadSaleFromKL(
        AnyInt(input), bytes[0].Pointer(), bytes[1].Pointer(), doubles[0].Pointer(),
        doubles[1].Pointer(), doubles[2].Pointer(), doubles[3].Pointer(), doubles[4].Pointer(),
        doubles[5].Pointer(), bytes[2].Pointer(), code.Pointer(), bytes[3].Pointer(),
        bytes[4].Pointer(), bytes[5].Pointer(), bytes[6].Pointer());
    JudgeFlag(result);
    for (const auto& byte : bytes) {
        Require(result == 1 || byte.Untouched(), "an output is written on success only");
        Require(result == 0 || !byte.IsNull(), "a null pointer is refused");
    }
}

void CallVersion(Input& input) {
    Output<int> to(input);
    const int result = GetKKMVers(to.Pointer());
    JudgeFlag(result);
    Require(result == 1 || to.IsNull() || to.Get() == 0, "an unknown version is 0");
}

void CallConnectDevice(Input& input) {
    // Only names that lead to the world's devices or to nothing.
    static char line_name[] = "/dev/ttyS0";
    static char missing[] = "/dev/tty-missing";
    static char empty[] = "";
    char* const names[] = {line_name, missing, empty, nullptr};
    JudgeFlag(ConnectKKMDevice(names[input.Choice(4)]));
}

void CallGetters(Input& /*input*/) {
    const int before = GetErrorCode();
    Require(std::equal_to<>()(cbGetCash(), 0.0), "cash is never told");
    Note(cbGetSum());
    Require(cbGetDiscountValue() >= -99 && cbGetDiscountValue() <= 99, "a discount has a range");
    Require(cbGetReturnMode() + cbGetCreditMode() <= 1, "a check is a return or a credit");
    Require(CheckPrintPrepare() == (before == 0 ? 1 : 0), "the preparation tells the last error");
    Require(GetErrorCode() == before, "getters leave the last error alone");
}

HostileLine* the_line = nullptr;

void CallPrintCheck(Input& /*input*/) {
    if (the_line->IsOpen()) {
        JudgeFlag(PrintCheck());
    }
}

using Call = void (*)(Input&);

const Call kCalls[] = {
    CallAddGoodSale,
    CallPrintCheck,
    [](Input&) { JudgeFlag(CheckClose()); },
    [](Input& in) { JudgeFlag(ConnectKKM(static_cast<int>(in.Choice(3)))); },
    CallConnectDevice,
    [](Input&) {
        DisconnectKKM();
        Require(GetErrorCode() == 0, "a disconnect leaves no error");
    },
    CallAddSale,
    CallGetSale,
    CallDeleteSale,
    CallSetCash,
    CallGetters,
    [](Input&) {
        cbClearSales();
        Require(cbGetSalesCount() == 0 && GetErrorCode() == 0, "a cleared buffer is empty");
    },
    [](Input& in) { cbSetReturnMode(AnyInt(in)); },
    [](Input& in) { cbSetCreditMode(AnyInt(in)); },
    [](Input& in) { JudgeFlag(cbSetDiscountValue(AnyInt(in))); },
    [](Input& in) {
        const int mode = AnyInt(in);
        cbSetClearBufMode(mode);
        Require(cbGetClearBufMode() == (mode > 0 ? 1 : 0), "the clear mode is kept");
    },
    [](Input&) { JudgeFlag(cbClearTitle()); },
    [](Input&) {
        Require(cbClearBottom() == 0 && GetErrorCode() == 71, "no footer can be cleared");
    },
    [](Input&) { JudgeFlag(CheckCancel()); },
    [](Input&) { Require(GetDiscountMode() == 1, "the discount mode is 1"); },
    [](Input& in) { Ask<int>(in, GetSmenaNum); },
    [](Input& in) { Ask<int>(in, GetKLNum); },
    [](Input& in) { Ask<int>(in, GetSaleNum); },
    [](Input& in) { Ask<int>(in, GetCheckCount); },
    [](Input& in) { Ask<double>(in, GetNI); },
    [](Input& in) { Ask<int>(in, GetKKMNum); },
    [](Input& in) {
        const int which = AnyInt(in);
        Ask<double>(in, [&](double* to) { return GetCashSum(which, to); });
    },
    [](Input& in) {
        const unsigned char number = in.Byte();
        Ask<double>(in, [&](double* to) { return GetTax(number, to); });
    },
    [](Input& in) { Ask<int>(in, GetSmenaStatus); },
    CallVersion,
    CallReadSale,
    [](Input& in) { JudgeFlag(Feed(static_cast<int>(in.Choice(8)) - 2)); },
    [](Input& in) {
        AnyText text(in);
        JudgeFlag(KKMPrintStr(text.Pointer()));
    },
    [](Input&) { JudgeFlag(Lock()); },
    [](Input&) { JudgeFlag(UnLock()); },
    [](Input&) { JudgeFlag(ClearIndicator()); },
    [](Input& in) {
        AnyText text(in);
        SetSupplierCode(text.Pointer());
    },
    ChooseCallbacks,
};

// As the library is when it has just been loaded.
void LoadAnew() {
    kvesk.~TVesk();
    new (&kvesk) TVesk();
    errVeskTarvo = 0;
    EventErrorProc = nullptr;
    EventQuery = nullptr;
    EventCheckPrepare = nullptr;
}

Bytes VersionAnswer(Input& input) {
    static const Bytes kAnswers[] = {{3, 10}, {2, 11}, {3, 2}, {3, 2, 0}, {3, 4}, {9, 9}};
    return kAnswers[input.Choice(std::size(kAnswers))];
}

void RunProgram(Input& input) {
    test::World& world = test::World::Get();
    LoadAnew();
    world.Reset();
    world.SetLogging(false);
    HostileLine line(input);
    the_line = &line;
    world.Attach("/dev/ttyS0", &line);
    line.OnDead([] { kvesk.terminate(); });
    line.Register().SetVersionAnswer(VersionAnswer(input));
    line.Register().SetErrorNumber(input.Byte());
    // Connecting by hand is left to the calls; most programs start so.
    if (input.Flag()) {
        JudgeFlag(ConnectKKM(1));
    }
    for (int i = 0; i < kMostCalls && !input.Exhausted(); ++i) {
        kCalls[input.Choice(std::size(kCalls))](input);
        JudgeError();
    }
    LoadAnew();  // closes the port while the line is there
}

}  // namespace
}  // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    fuzz::RunProgram(input);
    return 0;
}
