#!/usr/bin/env python3
"""A small till in Python: connects, sells two lines with a discount for cash, prints the check and
reads the register's counters.

    till.py DEVICE [LIBRARY]        (for example /dev/ttyUSB0)

LIBRARY is libVeskTarvoM5.so.1 where the system finds it, or a path.
"""
import ctypes
import sys
from ctypes import byref, c_char_p, c_double, c_int, c_ubyte


class RegisterError(Exception):
    """A call that gave 0, with the library's reason."""

    def __init__(self, text, code):
        super().__init__(text)
        self.code = code


class Register:
    """The functions of the library that this till uses, under their plain names."""

    def __init__(self, library):
        self.lib = ctypes.CDLL(library)
        self.lib.cbAddSale.argtypes = [c_char_p, c_double, c_double, c_int]
        self.lib.cbSetCash.argtypes = [c_double]
        self.lib.cbGetSum.restype = c_double
        self.lib.KKMErrorName.restype = c_char_p
        self.lib.KKMErrorAdvice.restype = c_char_p
        # A callback is a variable of the library; the object must live as long as the library.
        progress_type = ctypes.CFUNCTYPE(None, c_ubyte)
        self.on_progress = progress_type(
            lambda step: print("printing ..." if step == 0 else "check closed", flush=True))
        ctypes.c_void_p.in_dll(self.lib, "EventCheckPrepare").value = ctypes.cast(
            self.on_progress, ctypes.c_void_p).value

    def call(self, name, *arguments):
        if not getattr(self.lib, name)(*arguments):
            code = self.lib.GetErrorCode()
            raise RegisterError("%s: error %d, %s\n%s" % (
                name, code, self.lib.KKMErrorName(code).decode(),
                self.lib.KKMErrorAdvice(code).decode()), code)

    def number(self, name):
        value = c_int()
        self.call(name, byref(value))
        return value.value

    def counters(self):
        return self.number("GetKLNum"), self.number("GetCheckCount"), self.number("GetSaleNum")


def print_check(register):
    """Returns when the check is printed. After errors 2 and 32 the driver does not know. The
    counters do, if they are read before anything else is done, disconnecting included."""
    lines = register.lib.cbGetSalesCount()
    tape, checks, sales = register.counters()
    register.call("CheckClose")
    try:
        register.call("PrintCheck")
    except RegisterError as error:
        if error.code not in (2, 32):
            raise
        moved = None
        try:
            tape_now, checks_now, sales_now = register.counters()
            if tape_now == tape:
                moved = ((checks_now - checks) % 65536, (sales_now - sales) % 65536)
        except RegisterError:
            pass
        if moved == (1, lines):
            print("error %d, but the counters show the check: it is printed" % error.code,
                  file=sys.stderr)
            return
        print("the counters show no check" if moved == (0, 0)
              else "the counters do not tell: look at the paper", file=sys.stderr)
        raise


def sell(register, device):
    register.call("ConnectKKMDevice", device.encode())
    try:
        # The register prints code page 866.
        register.call("cbAddSale", "Bread".encode("cp866"), 25.50, 2, 1)
        register.call("cbAddSale", "Apples".encode("cp866"), 80.00, 0.75, 2)
        register.call("cbSetDiscountValue", -5)
        register.call("cbSetCash", 200)
        print("to pay: %.2f" % register.lib.cbGetSum())
        print("waiting for the cashier to ask for the check", flush=True)
        print_check(register)
        try:
            drawer = c_double()
            check = register.number("GetCheckCount")
            register.call("GetCashSum", 1, byref(drawer))
            print("printed check %d; sales for cash so far: %.2f" % (check, drawer.value))
        except RegisterError as error:
            print("printed; the counters could not be read: error %d" % error.code)
    finally:
        register.lib.DisconnectKKM()


def main(arguments):
    if len(arguments) not in (2, 3):
        print(__doc__.strip(), file=sys.stderr)
        return 2
    library = arguments[2] if len(arguments) == 3 else "libVeskTarvoM5.so.1"
    try:
        sell(Register(library), arguments[1])
    except (RegisterError, OSError) as error:
        print(error, file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
