#include "register_on_tty.h"

#include <sys/prctl.h>

#include <string>

namespace bench {

namespace {

constexpr unsigned long kFinestNs = 1;
constexpr unsigned long kUsual = 0;

}  // namespace

std::unique_ptr<test::RegisterProcess> StartRegister(int firmware, int baud) {
    prctl(PR_SET_TIMERSLACK, kFinestNs, 0, 0, 0);  // inherited by the child
    auto kkm = std::make_unique<test::RegisterProcess>(std::vector<std::string>{
        "--pace", "--firmware", std::to_string(firmware), "--baud", std::to_string(baud)});
    prctl(PR_SET_TIMERSLACK, kUsual, 0, 0, 0);
    return kkm;
}

}  // namespace bench
