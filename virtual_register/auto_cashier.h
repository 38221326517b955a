#pragma once

#include <cstdint>
#include <optional>

#include "model.h"

namespace virtual_register {

// A cashier who asks the host for a check whenever the register has been idle for a while. The
// while matters: a host that says good-bye waits for an idle register, and must come to see one.
class AutoCashier {
  public:
    static constexpr std::int64_t kPatienceUs = 300000;

    // Acts if it is time. Gives the moment at which to look again, if there is one.
    std::optional<std::int64_t> act(Model& model, std::int64_t now_us);

  private:
    std::optional<std::int64_t> idle_since_us_;
};

}  // namespace virtual_register
