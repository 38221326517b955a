// The library in a host process: loading and unloading, variables, exceptions, the stack.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstring>
#include <limits>
#include <stdexcept>

#include "system/host.h"

namespace test {
namespace {

class LoadTest : public testing::Test {
  protected:
    WorkingFolder folder;
};

// A pseudo terminal with nobody behind it.
class SilentTty {
  public:
    SilentTty() : master_(posix_openpt(O_RDWR | O_NOCTTY)) {
        grantpt(master_);
        unlockpt(master_);
        name_ = Text(ptsname(master_));
    }
    ~SilentTty() { close(master_); }

    char* Name() { return name_.data(); }

    // True while a process has the tty open.
    bool HasHost() const {
        pollfd line{master_, 0, 0};
        poll(&line, 1, 0);
        return (line.revents & POLLHUP) == 0;
    }

  private:
    int master_;
    std::vector<char> name_;
};

TEST_F(LoadTest, UnloadsForGoodEachTime) {
    ASSERT_FALSE(LibraryIsLoaded());
    for (int round = 0; round < 3; ++round) {
        {
            const Library library;
            EXPECT_TRUE(LibraryIsLoaded());
            EXPECT_EQ(library.cbGetSalesCount(), 0);
            EXPECT_EQ(library.GetErrorCode(), 0);
            EXPECT_EQ(library.cbAddSale(Text("tea").data(), 1.0, 1.0, 1), 1);
            EXPECT_EQ(library.cbClearBottom(), 0);
        }
        EXPECT_FALSE(LibraryIsLoaded());
    }
}

TEST_F(LoadTest, UnloadingDestroysTheDriverWhichClosesItsPort) {
    SilentTty tty;
    {
        const Library library;
        EXPECT_EQ(library.ConnectKKMDevice(tty.Name()), 0);
        EXPECT_EQ(library.GetErrorCode(), 2);
        ASSERT_TRUE(tty.HasHost());
    }
    EXPECT_FALSE(tty.HasHost());
}

TEST_F(LoadTest, VariablesStartEmpty) {
    const Library library;
    EXPECT_EQ(library.errVeskTarvo, 0);
    EXPECT_EQ(library.EventErrorProc, nullptr);
    EXPECT_EQ(library.EventQuery, nullptr);
    EXPECT_EQ(library.EventCheckPrepare, nullptr);
    EXPECT_EQ(library.EventCloseCheck, nullptr);
    EXPECT_EQ(library.hInstance, nullptr);
    EXPECT_EQ(library.LibID, nullptr);
    for (const char character : library.strErrorMsg) {
        EXPECT_EQ(character, '\0');
    }
    EXPECT_NE(library.Lookup("kvesk"), nullptr);
}

TEST_F(LoadTest, MessageTableHoldsBlanks) {
    const Library library;
    ASSERT_EQ(library.err_msg_count, 8);
    const std::vector<std::string> texts(library.err_msg, library.err_msg + 8);
    EXPECT_EQ(texts,
              (std::vector<std::string>{"  ", "   ", " ", "   ", "     ", "  ", "  ", "   "}));
}

TEST_F(LoadTest, HandlesAreTheHostsOwn) {
    const Library library;
    int here = 0;
    library.hInstance = &here;
    library.LibID = &folder;
    library.cbClearBottom();
    library.ConnectKKM(255);
    EXPECT_EQ(library.hInstance, &here);
    EXPECT_EQ(library.LibID, &folder);
}

int heard_code;
const char* heard_text;

TEST_F(LoadTest, CallbackSetThroughTheVariableIsCalled) {
    static const char kNotCalled[] = "";
    const Library library;
    heard_code = 0;
    heard_text = kNotCalled;
    library.EventErrorProc = [](int code, char* text) {
        heard_code = code;
        heard_text = text;
    };
    EXPECT_EQ(library.cbClearBottom(), 0);
    EXPECT_EQ(heard_code, 71);
    EXPECT_EQ(heard_text, nullptr);
    EXPECT_EQ(library.errVeskTarvo, 71);
}

TEST_F(LoadTest, CallbackThatThrowsReachesNobody) {
    const Library library;
    library.EventErrorProc = [](int, char*) { throw std::runtime_error("host"); };
    EXPECT_EQ(library.cbClearBottom(), 0);
    EXPECT_EQ(library.GetErrorCode(), 71);
}

TEST_F(LoadTest, MissingPortIsCode1WithoutText) {
    const Library library;
    EXPECT_EQ(library.ConnectKKM(0), 0);
    EXPECT_EQ(library.GetErrorCode(), 1);
    EXPECT_EQ(library.GetErrorMsg(), nullptr);
    EXPECT_EQ(library.ConnectKKMDevice(Text("/dev/no-such-tty").data()), 0);
    EXPECT_EQ(library.GetErrorCode(), 1);
    library.DisconnectKKM();
    EXPECT_EQ(library.GetErrorCode(), 0);
}

TEST_F(LoadTest, TraceFileBeginsInTheWorkingDirectory) {
    const Library library;
    library.ConnectKKMDevice(Text("/dev/no-such-tty").data());
    EXPECT_EQ(folder.Traced(), "Connect -  Linux 1.0.0.0 (win 1.2.13.1)\n");
    library.DisconnectKKM();
    EXPECT_EQ(folder.Traced(), "Connect -  Linux 1.0.0.0 (win 1.2.13.1)\nDisconnect - OK");
    EXPECT_EQ(folder.Read("TarvoM5.log"), "") << "the protocol's trace is off";
}

TEST_F(LoadTest, SilentLineIsTracedOnceForTheFirstSpeed) {
    SilentTty tty;
    const Library library;
    EXPECT_EQ(library.ConnectKKMDevice(tty.Name()), 0);
    EXPECT_EQ(folder.Traced(),
              "Connect -  Linux 1.0.0.0 (win 1.2.13.1)\n"
              "TTarvoVesk::Connect: error getKKMVersion\n");
}

TEST_F(LoadTest, TraceThatCannotBeWrittenChangesNothing) {
    const Library library;
    ASSERT_EQ(symlink("/nowhere/at/all", "VeskTarvoM5.log"), 0);
    EXPECT_EQ(library.ConnectKKMDevice(Text("/dev/no-such-tty").data()), 0);
    EXPECT_EQ(library.GetErrorCode(), 1);
}

TEST_F(LoadTest, KeepsLettingTheExceptionOfCashOut) {
    const Library library;
    bool caught = false;
    try {
        library.cbSetCash(10.0);
    } catch (const std::exception&) {
        caught = true;
    }
    EXPECT_TRUE(caught);
    EXPECT_EQ(library.GetErrorCode(), 0);
}

TEST_F(LoadTest, PlainNameOfCashLetsNothingOut) {
    const Library library;
    using SetCash = int (*)(double);
    const auto set_cash = reinterpret_cast<SetCash>(library.Lookup("cbSetCash"));
    EXPECT_EQ(set_cash(10.0), 0);
    EXPECT_EQ(library.GetErrorCode(), 2);
}

TEST_F(LoadTest, BadNumbersFromAHostAreRefused) {
    const Library library;
    const double nan = std::numeric_limits<double>::quiet_NaN();
    std::vector<char> name = Text("tea");
    EXPECT_EQ(library.cbAddSale(name.data(), nan, 1.0, 1), 0);
    EXPECT_EQ(library.GetErrorCode(), 14);
    EXPECT_EQ(library.cbAddSale(name.data(), 1.0, nan, 1), 0);
    EXPECT_EQ(library.GetErrorCode(), 15);
    EXPECT_EQ(library.cbAddSale(nullptr, 1.0, 1.0, 1), 0);
    EXPECT_EQ(library.GetErrorCode(), 12);
}

TEST_F(LoadTest, SupportRoutinesAnswerAsOnThisPlatform) {
    const Library library;
    EXPECT_EQ(library.RoundHalfUp(2.5), 3);
    EXPECT_EQ(library.RoundHalfUp(2.49), 2);
    EXPECT_EQ(library.RoundHalfUp(-1.7), -1);
    EXPECT_EQ(library.RoundHalfUp(-2.5), -2);
    EXPECT_EQ(library.ULtoHex(305), (std::vector<unsigned char>{3, 0, 5}));
    EXPECT_EQ(library.ULtoHex(0), std::vector<unsigned char>());
    EXPECT_EQ(library.GetTickCount(), 0UL);
    EXPECT_EQ(library.GetLastErrorMsg(), "");
    EXPECT_STREQ(library.zetdGetErrorMsg(5), "");
    library.DbgTrace("%d", 1);
    library.Sleep(1);
    char target[] = "target";
    library.CharToOem(Text("source").data(), target);
    library.OemToChar(Text("source").data(), target);
    EXPECT_STREQ(target, "target");
}

// The address sanitizer itself does not survive such a stack.
#if defined(__i386__) && !defined(__SANITIZE_ADDRESS__)

// Calls a function with its arguments (words on the stack) and the stack pointer `offset` bytes
// below a 16-byte boundary, as hosts of old compilers do.
extern "C" int CallOffBoundary(void* function, unsigned offset, const void* words, unsigned count);
__asm__(R"(
        .text
        .type CallOffBoundary, @function
CallOffBoundary:
        pushl   %ebp
        movl    %esp, %ebp
        pushl   %esi
        pushl   %edi
        movl    16(%ebp), %esi
        movl    20(%ebp), %ecx
        leal    (,%ecx,4), %eax
        subl    %eax, %esp
        andl    $-16, %esp
        subl    12(%ebp), %esp
        movl    %esp, %edi
        cld
        rep movsl
        call    *8(%ebp)
        leal    -8(%ebp), %esp
        popl    %edi
        popl    %esi
        popl    %ebp
        ret
        .size CallOffBoundary, .-CallOffBoundary
)");

class StackTest : public LoadTest {
  protected:
    template <typename Signature, typename Arguments>
    static int Call(Signature* function, unsigned offset, const Arguments& arguments) {
        static_assert(sizeof arguments % 4 == 0, "the stack takes whole words");
        return CallOffBoundary(reinterpret_cast<void*>(function), offset, &arguments,
                               sizeof arguments / 4);
    }
};

struct __attribute__((packed, aligned(4))) SaleArguments {
    char* name;
    double price;
    double quantity;
    int section;
};

TEST_F(StackTest, FourByteAlignmentSurvivesSse) {
    const Library library;
    std::vector<char> name = Text("a name that is too long for the short string of the library");
    std::vector<char> device = Text("/dev/no-such-tty");
    for (const unsigned offset : {0U, 4U, 8U, 12U}) {
        EXPECT_EQ(Call(library.cbAddSale, offset, SaleArguments{name.data(), 19.99, 1.5, 3}), 1);
        EXPECT_EQ(Call(library.cbSetDiscountValue, offset, -7), 1);
        EXPECT_EQ(Call(library.cbClearBottom, offset, 0), 0);
        EXPECT_EQ(Call(library.ConnectKKMDevice, offset, device.data()), 0);
        EXPECT_EQ(library.GetErrorCode(), 1);
        EXPECT_EQ(Call(library.RoundHalfUp, offset, 2.5), 3);
        Call(library.cbGetSum, offset, 0);
        Call(library.DisconnectKKM, offset, 0);
    }
    EXPECT_EQ(library.cbGetSalesCount(), 4);
}

TEST_F(StackTest, FourByteAlignmentSurvivesALineWithoutAnswer) {
    SilentTty tty;
    const Library library;
    EXPECT_EQ(Call(library.ConnectKKMDevice, 4, tty.Name()), 0);
    EXPECT_EQ(library.GetErrorCode(), 2);
    int number = 0;
    EXPECT_EQ(Call(library.GetKLNum, 12, &number), 0);
    EXPECT_EQ(library.GetErrorCode(), 2);
}

#endif

}  // namespace
}  // namespace test
