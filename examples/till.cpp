// A small till in C++: connects, sells two lines with a discount for cash, prints the check and
// reads the register's counters.
//   till DEVICE        (for example /dev/ttyUSB0)
#include <VeskTarvoM5/VeskTarvoM5.h>

#include <cstdio>
#include <stdexcept>
#include <string>

namespace {

// Says which step failed, why, and what to do.
std::runtime_error failure(const std::string& step, int code) {
    return std::runtime_error(step + ": error " + std::to_string(code) + ", " + KKMErrorName(code) +
                              "\n" + KKMErrorAdvice(code));
}

// Turns a result of 0 into an exception.
void require(int result, const std::string& step) {
    if (result == 0) {
        throw failure(step, GetErrorCode());
    }
}

// Disconnects however the sale ends.
struct Connection {
    explicit Connection(char* device) { require(ConnectKKMDevice(device), "connect"); }
    ~Connection() { DisconnectKKM(); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
};

struct Counters {
    int tape = 0;
    int checks = 0;
    int sales = 0;
    bool read() {
        return GetKLNum(&tape) != 0 && GetCheckCount(&checks) != 0 && GetSaleNum(&sales) != 0;
    }
};

// Returns when the check is printed. After errors 2 and 32 the driver does not know. The counters
// do, if they are read before anything else is done, disconnecting included.
void print_check() {
    const int lines = cbGetSalesCount();
    Counters before;
    require(before.read(), "counters");
    require(CheckClose(), "check");
    if (PrintCheck() != 0) {
        return;
    }
    const int code = GetErrorCode();
    if (code != echDevice && code != echPrintTest) {
        throw failure("check", code);
    }
    Counters after;
    const bool known = after.read() && after.tape == before.tape;
    const int checks = known ? (after.checks - before.checks + 65536) % 65536 : -1;
    const int sales = known ? (after.sales - before.sales + 65536) % 65536 : -1;
    if (checks == 1 && sales == lines) {
        std::fprintf(stderr, "error %d, but the counters show the check: it is printed\n", code);
        return;
    }
    std::fputs(checks == 0 && sales == 0 ? "the counters show no check\n"
                                         : "the counters do not tell: look at the paper\n",
               stderr);
    throw failure("check", code);
}

void sell(char* device) {
    const Connection connection(device);
    std::string bread = "Bread";
    std::string apples = "Apples";
    require(cbAddSale(bread.data(), 25.50, 2, 1), "sale");
    require(cbAddSale(apples.data(), 80.00, 0.75, 2), "sale");
    require(cbSetDiscountValue(-5), "payment");
    cbSetCash(200);  // the one function that reports a dead register by an exception
    std::printf("to pay: %.2f\n", cbGetSum());
    std::puts("waiting for the cashier to ask for the check");
    print_check();
    int check = 0;
    double drawer = 0;
    if (GetCheckCount(&check) != 0 && GetCashSum(1, &drawer) != 0) {
        std::printf("printed check %d; sales for cash so far: %.2f\n", check, drawer);
    } else {
        std::printf("printed; the counters could not be read: error %d\n", GetErrorCode());
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: till DEVICE\n", stderr);
        return 2;
    }
    EventCheckPrepare = [](unsigned char step) {
        std::puts(step == 0 ? "printing ..." : "check closed");
    };
    try {
        sell(argv[1]);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "%s\n", e.what());
        return 1;
    }
    return 0;
}
