#include "auto_cashier.h"

namespace virtual_register {

std::optional<std::int64_t> AutoCashier::act(Model& model, std::int64_t now_us) {
    model.advance(now_us);
    const State state = model.state();
    const bool idle = (state == State::none || state == State::switched_on) && model.powered() &&
                      !model.keyboard_locked() && !model.open_check().is_open() &&
                      model.paper().present();
    if (!idle) {
        idle_since_us_.reset();
        return std::nullopt;
    }
    if (!idle_since_us_) {
        idle_since_us_ = now_us;
    }
    if (now_us - *idle_since_us_ < kPatienceUs) {
        return *idle_since_us_ + kPatienceUs;
    }
    if (!model.ask_host()) {
        return now_us + kPatienceUs;  // a receipt is being printed
    }
    idle_since_us_.reset();
    return std::nullopt;
}

}  // namespace virtual_register
