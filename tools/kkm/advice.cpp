#include "kkm/advice.h"

#include "VeskTarvoM5/VeskTarvoM5.h"

namespace kkm {

Advice AdviceFor(int code) {
    switch (static_cast<ErrorVeskTarvo>(code)) {
        case echOk:
            return {"echOk", "There is no error.", "Nothing needs to be done."};
        case echNoPort:
            return {"echNoPort", "The serial port could not be opened.",
                    "Check that the device exists, that the cable or adapter is plugged in and "
                    "that you may use it (on Debian: be in the group dialout)."};
        case echDevice:
            return {"echDevice", "The register did not answer, or did not do what it was told.",
                    "Check its power, its cable and that it is in its sales mode. If a check was "
                    "being printed, look at the paper before you send it again."};
        case echNoVersion:
            return {"echNoVersion", "The register answers, but its firmware is not known.",
                    "Firmware 301, 302, 303, 310 and 400 can be driven. Check that this device is "
                    "a Tarvo M5 and not another one on the same line."};
        case echPaperAbsent:
            return {"echPaperAbsent", "The register has no paper; the check is still open there.",
                    "Load paper and finish the check at the register. Do not send it again."};
        case echRegKass:
            return {"echRegKass", "The register is in a state in which it takes no check.",
                    "Finish or cancel what is begun at the register, then send the check again."};
        case echKLRead:
            return {"echKLRead", "The control tape has no such record.",
                    "Ask for a record from 1 to one less than the number of the next sale."};
        case echIndex:
            return {"echIndex", "The check buffer has no such line.",
                    "Lines are counted from 1 to the number of lines in the buffer."};
        case echParam:
            return {"echParam", "A value is outside its range.",
                    "Use a section from 1 to 15, a tax number from 0 to 16, and a device name."};
        case echPrice:
            return {"echPrice", "The price is zero or more than the register takes.",
                    "Use a price from 0.01 to 99999.99; the register may have been set to a lower "
                    "limit."};
        case echQuantity:
            return {"echQuantity", "The quantity is more than the register takes.",
                    "Use up to 65535 pieces, or up to 65 when the quantity has a fraction; split "
                    "a larger one into several lines."};
        case echSalesFull:
            return {"echSalesFull", "The check has more lines than the register takes.",
                    "Firmware 302 and below takes 19 lines: split the check in two."};
        case echDiscount:
            return {"echDiscount", "The discount is outside its range.",
                    "Use whole per cents from -99 (discount) to 99 (surcharge)."};
        case echNoCash:
            return {"echNoCash", "The register refused the check for want of money.",
                    "Take cash that covers the total, or put money into the drawer before a "
                    "return. The check was cancelled at the register: correct it and send it "
                    "again."};
        case echPrintTest:
            return {"echPrintTest",
                    "The register's counters do not show that the check was "
                    "printed.",
                    "Look at the paper and the register's display; mend what it complains of. "
                    "Send the check again only if it is not on the paper."};
        case echCancelCheck:
            return {"echCancelCheck", "The cashier cancelled the check at the register.",
                    "Nothing is wrong; send the check again when the cashier is ready."};
        case echNotSupported:
            return {"echNotSupported", "The register has no such operation.", "Do without it."};
    }
    return {"unknown", "This is not an error code of the library.",
            "Check that the tool and the library are of the same release."};
}

}  // namespace kkm
