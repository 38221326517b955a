/* A host in C: the driver through its plain names. */
#include <VeskTarvoM5/VeskTarvoM5.h>
#include <stdio.h>
#include <string.h>

static int reported;

static void on_error(int code, char* text) {
    reported = text == 0 ? code : -1;
}

int main(void) {
    char device[] = "/nonexistent/port";
    char name[] = "Bread";
    EventErrorProc = on_error;
    if (ConnectKKMDevice(device) != 0 || GetErrorCode() != echNoPort || reported != echNoPort) {
        return 1;
    }
    if (strcmp(KKMErrorName(echNoPort), "echNoPort") != 0 || KKMErrorAdvice(echNoPort)[0] == 0) {
        return 2;
    }
    if (cbAddSale(name, 19.99, 3, 1) != 1 || cbSetDiscountValue(-10) != 1) {
        return 3;
    }
    if (cbGetSum() < 53.969 || cbGetSum() > 53.971) {
        return 4;
    }
    if (cbSetCash(60) != 0 || GetErrorCode() != echDevice) { /* asks a register that is not there */
        return 5;
    }
    puts("consumer in C: ok");
    return 0;
}
