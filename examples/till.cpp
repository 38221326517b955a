// A small till in C++: connects, sells two lines with a discount for cash, prints the check and
// reads the register's counters.
//   till DEVICE        (for example /dev/ttyUSB0)
#include <VeskTarvoM5/VeskTarvoM5.h>

#include <cstdio>
#include <stdexcept>
#include <string>

namespace {

// Turns a result of 0 into an exception that says which step failed, why, and what to do.
void require(int result, const std::string& step) {
    if (result == 0) {
        const int code = GetErrorCode();
        throw std::runtime_error(step + ": error " + std::to_string(code) + ", " +
                                 KKMErrorName(code) + "\n" + KKMErrorAdvice(code));
    }
}

// Disconnects however the sale ends.
struct Connection {
    explicit Connection(char* device) { require(ConnectKKMDevice(device), "connect"); }
    ~Connection() { DisconnectKKM(); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
};

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
    require(CheckClose(), "check");
    require(PrintCheck(), "check");
    int check = 0;
    double drawer = 0;
    require(GetCheckCount(&check), "counters");
    require(GetCashSum(1, &drawer), "counters");
    std::printf("printed check %d; sales for cash so far: %.2f\n", check, drawer);
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
