#include <VeskTarvoM5/VeskTarvoM5.h>

#include <cstdio>
#include <cstdlib>

static void require(int done, const char* step) {
    if (done == 0) {
        std::printf("%s: %s\n", step, KKMErrorAdvice(GetErrorCode()));
        DisconnectKKM();
        std::exit(1);
    }
}

int main(int argc, char** argv) {
    char bread[] = "Bread";
    char cheese[] = "Cheese";
    int checks = 0;
    require(ConnectKKMDevice(argc > 1 ? argv[1] : nullptr), "connect");
    require(cbAddSale(bread, 42.50, 2, 1), "bread");
    require(cbAddSale(cheese, 680, 0.345, 2), "cheese");
    cbSetCash(500);
    require(CheckClose(), "prepare");
    require(PrintCheck(), "print");  // returns when the cashier has asked for it and it is printed
    require(GetCheckCount(&checks), "counters");
    std::printf("printed check %d\n", checks);
    DisconnectKKM();
}
