// The register and its cashier, and what is true about them: which checks were registered, when
// and why. The checker believes this and nothing else.
#pragma once

#include <optional>
#include <vector>

#include "simulation/fault_plan.h"
#include "simulation/journal.h"
#include "virtual_register/model.h"

namespace simulation {

// What the cashier does while the host prints: asks for the check, sooner or later.
struct CashierPlan {
    enum class Asks : std::uint8_t {
        by_code,
        by_barcode,
        with_free_line,  // in the middle of typing a line
        with_line,       // a line typed and registered: the host must not print into that check
        declines,        // tells the host that no check is wanted
        marked,          // for a sale taken back
        never,
    };
    Asks asks = Asks::by_code;
    std::uint32_t after_polls = 0;  // so many status requests of an idle register
    std::uint32_t barcode_digits = 13;
};

// A check that came on the paper.
struct Registration {
    std::uint32_t call = 0;      // the host's call during which it came, counted from 1
    std::uint32_t exchange = 0;  // the exchange that was going on
    std::uint32_t born_in = 0;   // the call during which its first line came
    bool by_key = false;         // the cashier's key brought it out
    // What was out of the printer when the check was registered; its receipt is the end of it.
    std::size_t paper_lines = 0;
};

// What the register itself told the driver during a call.
struct RegisterSaid {
    bool refused_sale = false;
    bool refused_discount = false;  // by not getting ready
    bool refused_closing = false;
    bool refused_cash = false;
    bool no_paper = false;  // its error byte stood at that when it was read
    bool marked = false;    // in a query
    bool declined = false;  // in a query: the cashier wants no check
};

class RegisterSide {
  public:
    RegisterSide(virtual_register::Model& model, Journal& journal, const CashierPlan& cashier,
                 Micros started);

    // A new call of the host. The cashier asks only during one that prints.
    void BeginCall(std::uint32_t number, bool prints);

    std::optional<virtual_register::Answer> Take(const virtual_register::Request& request,
                                                 Micros now);
    // A fault of the register's own or an act of the cashier.
    void Act(const Fault& fault, std::uint8_t command, Micros now);

    const virtual_register::Model& model() const { return model_; }
    const std::vector<Registration>& registrations() const { return registrations_; }
    // Acts of the cashier in the present call that changed the check or the counters.
    std::uint32_t changes_by_cashier() const { return changes_by_cashier_; }
    const RegisterSaid& said() const { return said_; }
    // As a host tells it from the version answer.
    int firmware_as_reported() const {
        const int number = model_.memory().firmware().number;
        return number == 312 ? 310 : number;
    }
    bool is_busy() const { return busy_; }

  private:
    void Refuse(const Fault& fault, std::uint8_t command);
    bool CashierActs(const Fault& fault);
    void AskWhenIdle();
    bool Ask();
    void NoteSaid(const virtual_register::Request& request, const virtual_register::Answer& answer);
    void LetPowerReturn(Micros now);
    void NoteCheck(Micros now, bool by_key);
    std::int64_t RegisterTime(Micros now) const {
        return static_cast<std::int64_t>(now - started_);
    }

    virtual_register::Model& model_;
    Journal& journal_;
    const CashierPlan& cashier_;
    Micros started_;
    Micros power_on_at_ = 0;

    std::uint32_t call_ = 0;
    bool call_prints_ = false;
    std::uint32_t idle_polls_ = 0;
    std::uint32_t asks_left_ = 0;
    std::uint32_t changes_by_cashier_ = 0;
    RegisterSaid said_;
    bool busy_ = false;
    std::uint64_t registered_ = 0;
    std::uint32_t born_in_ = 0;
    bool had_lines_ = false;
    std::vector<Registration> registrations_;
};

}  // namespace simulation
