#include "protocol/commands.h"

const char* cmdToStr(kkm_command code) {
    // Only codes that service staff meet in traces have a name.
    switch (code) {
        case dev_reque:
            return "dev_reque";
        case dev_salecode:
            return "dev_salecode";
        case dev_discount:
            return "dev_discount";
        case dev_resetinf:
            return "dev_resetinf";
        case dev_reset:
            return "dev_reset";
        case kkm_reset:
            return "kkm_reset";
        case kkm_resetinf:
            return "kkm_resetinf";
        case ks_none:
            return "ks_none";
        case ks_salecode:
            return "ks_salecode";
        case ks_saleadd:
            return "ks_saleadd";
        case ks_salebarcode:
            return "ks_salebarcode";
        case ks_salenoadd:
            return "ks_salenoadd";
        case kkm_discount:
            return "kkm_discount";
        case ks_kkmgo:
            return "ks_kkmgo";
        case kkm_salecode:
            return "kkm_salecode";
        case ks_saledel:
            return "ks_saledel";
        case ks_checkbufclear:
            return "ks_checkbufclear";
        case ks_salefree:
            return "ks_salefree";
        case ks_checkout:
            return "ks_checkout";
        case ks_discount:
            return "ks_discount";
        case ks_discountcard:
            return "ks_discountcard";
        case ks_kkmon:
            return "ks_kkmon";
        case ks_smenaclose:
            return "ks_smenaclose";
        case ks_weight:
            return "ks_weight";
        case ks_keylock:
            return "ks_keylock";
        default:
            return "UnNone";
    }
}

const char* CheckTypeInStr(kkm_check type) {
    const bool known = type >= 0 && type <= 4;
    return known ? "" : "UnNone";
}
