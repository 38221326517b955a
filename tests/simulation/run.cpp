#include "simulation/run.h"

#include "simulation/checker.h"
#include "simulation/exchange_log.h"
#include "simulation/host.h"
#include "simulation/simulated_system.h"
#include "simulation/trace_files.h"

namespace simulation {
namespace {

using virtual_register::Memory;
using virtual_register::Model;

// Talks to the register before the driver does.
void Prepare(const RegisterPlan& plan, Model& model) {
    const auto ask = [&](std::uint8_t command, std::initializer_list<int> payload) {
        virtual_register::Request request;
        request.command = command;
        for (const int byte : payload) {
            request.payload.add(static_cast<std::uint8_t>(byte));
        }
        model.handle(request, 0);
    };
    if (plan.switched_on_long_ago) {
        ask(0x7F, {});
    }
    virtual_register::SaleLine line;
    line.name.add("LEFT OVER");
    line.price_kopecks = 100;
    line.quantity_thousandths = 1000;
    line.amount_kopecks = 100;
    for (std::uint32_t i = 0; i < plan.lines_in_open_check; ++i) {
        model.enter_line(line);
    }
    if (plan.lines_in_open_check > 0 && plan.open_check_closed) {
        ask(0x25, {6});
        ask(0x7F, {});
    }
    if (plan.paper_out) {
        model.paper_out();
    }
}

Model MakeRegister(const Scenario& scenario) {
    const RegisterPlan& plan = scenario.kkm;
    virtual_register::Identity identity;
    identity.firmware = plan.firmware;
    identity.drawer_kopecks = plan.drawer_kopecks;
    virtual_register::Settings settings;
    settings.net_number = scenario.line.net_number;
    settings.print_us_per_line = plan.print_us_per_line;
    Model model(Memory(identity), settings);
    if (plan.shift_open) {
        model.open_shift();
        model.memory().checks = plan.checks;
        model.memory().tape.start(plan.records);
    }
    Prepare(plan, model);
    return model;
}

// The calls of one run, one after another.
class Session {
  public:
    Session(const Scenario& scenario, Journal& journal)
        : scenario_(scenario),
          journal_(journal),
          model_(MakeRegister(scenario)),
          side_(model_, journal, scenario.cashier, kStart),
          line_(side_, journal, scenario.line, scenario.faults),
          system_(line_, journal, scenario.faults),
          checker_(journal, side_, required_, result_.figures) {
        const std::uint8_t number =
            scenario.host.asks_for_number ? scenario.line.net_number : std::uint8_t{0};
        Reload(number, scenario.host.callbacks);
        required_.SetCallbacks(scenario.host.callbacks);
        required_.SetNumber(number);
    }

    RunResult Run() {
        const Micros begun = system_.Now();
        for (const Call& call : scenario_.host.calls) {
            if (!Wanted(call.when)) {
                continue;
            }
            if (!Do(call)) {
                break;
            }
        }
        Figures& figures = result_.figures;
        figures.runs = 1;
        figures.calls = number_;
        figures.exchanges = journal_.exchanges().size();
        figures.virtual_s = (system_.Now() - begun) / 1'000'000;
        for (std::size_t i = 0; i < kFaultKinds; ++i) {
            figures.faults[i] = line_.injected()[i];
            const auto kind = static_cast<FaultKind>(i);
            if (IsForWholeRun(kind) && scenario_.faults.Has(kind)) {
                ++figures.faults[i];
            }
        }
        result_.verdicts = checker_.verdicts();
        figures.violations = result_.violation.empty() ? 0 : 1;
        result_.exchanges = static_cast<std::uint32_t>(journal_.exchanges().size());
        return result_;
    }

  private:
    static constexpr Micros kStart = 1'000'000'000;

    bool Wanted(When when) const {
        return when == When::always || (when == When::after_failed_print && print_failed_) ||
               (when == When::after_failed_connect && connect_failed_);
    }

    bool Do(const Call& call) {
        const bool prints = call.kind == CallKind::print_check;
        ++number_;
        CallFacts facts;
        facts.call = &call;
        facts.number = number_;
        facts.before = {model_.memory().tape_number, model_.memory().tape.count(),
                        model_.paper().lines().size()};
        side_.BeginCall(number_, prints);
        system_.BeginCall(prints ? scenario_.host.patience : 0);
        journal_.Add(EventKind::call, system_.Now(),
                     static_cast<int>(&call - scenario_.host.calls.data()));
        facts.first_event = journal_.events().size();
        facts.first_exchange = static_cast<std::uint32_t>(journal_.exchanges().size());
        facts.answered = Perform(call);
        facts.ended_by_host = system_.ended_by_host();
        facts.plug_pulled = system_.plug_pulled();
        std::optional<std::string> wrong;
        try {
            facts.required =
                required_.Follow(call, journal_, facts.first_event, facts.first_exchange);
            wrong = checker_.Check(facts);
        } catch (const Deviation& deviation) {
            wrong = deviation.what();
        }
        journal_.Add(EventKind::result, system_.Now(), facts.answered.error, facts.answered.result);
        if (prints) {
            print_failed_ = facts.answered.result == 0;
        } else if (call.kind == CallKind::connect || call.kind == CallKind::connect_device) {
            connect_failed_ = facts.answered.result == 0;
        }
        if (wrong) {
            result_.violation = *wrong;
            result_.call = NameOf(call.kind);
        }
        return !wrong;
    }

    const Scenario& scenario_;
    Journal& journal_;
    Model model_;
    RegisterSide side_;
    SimulatedLine line_;
    SimulatedSystem system_;
    RequiredDriver required_;
    RunResult result_;
    Checker checker_;
    std::uint32_t number_ = 0;
    bool print_failed_ = false;
    bool connect_failed_ = false;
};

}  // namespace

RunResult Runner::Run(const Scenario& scenario, std::string* log) {
    journal_.Clear();
    const TraceFiles traces(scenario.faults);
    RunResult result = Session(scenario, journal_).Run();
    if (log != nullptr) {
        *log = TellRun(scenario, journal_, result);
    }
    return result;
}

}  // namespace simulation
