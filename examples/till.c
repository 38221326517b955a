/* A small till in C: connects, sells two lines with a discount for cash, prints the check and reads
   the register's counters.
     till DEVICE        (for example /dev/ttyUSB0) */
#include <VeskTarvoM5/VeskTarvoM5.h>
#include <stdio.h>

/* Says which step failed, why, and what to do; the exit status of the program. */
static int failed(const char* step) {
    const int code = GetErrorCode();
    fprintf(stderr, "%s: error %d, %s\n%s\n", step, code, KKMErrorName(code),
            KKMErrorAdvice(code));
    DisconnectKKM();
    return 1;
}

static void on_progress(unsigned char step) {
    puts(step == 0 ? "printing ..." : "check closed");
}

int main(int argc, char** argv) {
    char bread[] = "Bread", apples[] = "Apples";
    int check = 0;
    double drawer = 0;

    if (argc != 2) {
        fputs("usage: till DEVICE\n", stderr);
        return 2;
    }
    EventCheckPrepare = on_progress;
    if (!ConnectKKMDevice(argv[1])) {
        return failed("connect");
    }
    if (!cbAddSale(bread, 25.50, 2, 1) || !cbAddSale(apples, 80.00, 0.75, 2)) {
        return failed("sale");
    }
    if (!cbSetDiscountValue(-5) || !cbSetCash(200)) {
        return failed("payment");
    }
    printf("to pay: %.2f\n", cbGetSum());
    puts("waiting for the cashier to ask for the check");
    if (!CheckClose() || !PrintCheck()) {
        return failed("check");
    }
    if (!GetCheckCount(&check) || !GetCashSum(1, &drawer)) {
        return failed("counters");
    }
    printf("printed check %d; sales for cash so far: %.2f\n", check, drawer);
    DisconnectKKM();
    return 0;
}
