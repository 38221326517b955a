// A host in C++: the driver through its C++ names.
#include <VeskTarvoM5/VeskTarvoM5.h>

#include <cmath>
#include <cstdio>
#include <exception>

int main() {
    char name[] = "Bread";
    if (cbAddSale(name, 19.99, 3, 1) != 1 || cbSetDiscountValue(-10) != 1) {
        return 1;
    }
    if (std::round(cbGetSum() * 100) != 5397 || RoundHalfUp(-2.5) != -2) {
        return 2;
    }
    bool thrown = false;
    try {
        cbSetCash(60);  // asks a register that is not there
    } catch (const std::exception&) {
        thrown = true;
    }
    if (!thrown) {
        return 3;
    }
    std::puts("consumer in C++: ok");
    return 0;
}
