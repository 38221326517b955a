/* A small till in C: connects, sells two lines with a discount for cash, prints the check and reads
   the register's counters.
     till DEVICE        (for example /dev/ttyUSB0) */
#include <VeskTarvoM5/VeskTarvoM5.h>
#include <stdio.h>

/* Says which step failed, why, and what to do; the exit status of the program. */
static int failed(const char* step, int code) {
    fprintf(stderr, "%s: error %d, %s\n%s\n", step, code, KKMErrorName(code), KKMErrorAdvice(code));
    DisconnectKKM();
    return 1;
}

typedef struct {
    int tape, checks, sales;
} counters;

static int read_counters(counters* now) {
    return GetKLNum(&now->tape) && GetCheckCount(&now->checks) && GetSaleNum(&now->sales);
}

/* Prints the check; 0 when it is printed. After errors 2 and 32 the driver does not know. The
   counters do, if they are read before anything else is done, disconnecting included. */
static int print_check(void) {
    const int lines = cbGetSalesCount();
    counters before, after;
    int code, checks, sales, known;

    if (!read_counters(&before)) {
        return failed("counters", GetErrorCode());
    }
    if (!CheckClose()) {
        return failed("check", GetErrorCode());
    }
    if (PrintCheck()) {
        return 0;
    }
    code = GetErrorCode();
    if (code != echDevice && code != echPrintTest) {
        return failed("check", code);
    }
    known = read_counters(&after) && after.tape == before.tape;
    checks = known ? (after.checks - before.checks + 65536) % 65536 : -1;
    sales = known ? (after.sales - before.sales + 65536) % 65536 : -1;
    if (checks == 1 && sales == lines) {
        fprintf(stderr, "error %d, but the counters show the check: it is printed\n", code);
        return 0;
    }
    fputs(checks == 0 && sales == 0 ? "the counters show no check\n"
                                    : "the counters do not tell: look at the paper\n",
          stderr);
    return failed("check", code);
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
        return failed("connect", GetErrorCode());
    }
    if (!cbAddSale(bread, 25.50, 2, 1) || !cbAddSale(apples, 80.00, 0.75, 2)) {
        return failed("sale", GetErrorCode());
    }
    if (!cbSetDiscountValue(-5) || !cbSetCash(200)) {
        return failed("payment", GetErrorCode());
    }
    printf("to pay: %.2f\n", cbGetSum());
    puts("waiting for the cashier to ask for the check");
    if (print_check() != 0) {
        return 1;
    }
    if (GetCheckCount(&check) && GetCashSum(1, &drawer)) {
        printf("printed check %d; sales for cash so far: %.2f\n", check, drawer);
    } else {
        printf("printed; the counters could not be read: error %d\n", GetErrorCode());
    }
    DisconnectKKM();
    return 0;
}
