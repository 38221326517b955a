#include "serial/mini_com_error.h"

#include <array>

EMiniCom::EMiniCom(const CMiniCom* /*source*/, MiniComErr code, const std::string& detail)
    : code(code), message(CodeToStr(code)) {
    if (!detail.empty()) {
        message += ": " + detail;
    }
}

EMiniCom::EMiniCom(const CMiniCom* source, MiniComErr code, const std::ostringstream& detail)
    : EMiniCom(source, code, detail.str()) {}

const char* EMiniCom::CodeToStr(MiniComErr code) {
    static constexpr std::array<const char*, errEscapeCommFunction + 1> kTexts = {
        "errCreateFile",      "errReadFile",     "errWriteFile",
        "errGetCommState",    "errSetCommState", "errGetCommTimeouts",
        "errSetCommTimeouts", "errPurgeComm",    "errEscapeCommFunction",
    };
    const auto index = static_cast<unsigned>(code);
    return index < kTexts.size() ? kTexts[index] : "Unknoun error";  // spelled so for ever
}
