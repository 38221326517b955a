#include "simulation/verdict.h"

namespace simulation {
namespace {

template <typename Array>
void AddTo(Array& sums, const Array& more) {
    for (std::size_t i = 0; i < sums.size(); ++i) {
        sums[i] += more[i];
    }
}

}  // namespace

std::string_view NameOf(Verdict verdict) {
    static constexpr std::array<std::string_view, kVerdicts> kNames = {
        "printed",
        "failed",
        "counters_unread",
        "answers_slipped",
        "counters_wrapped",
        "counters_forged",
        "changed_by_cashier",
        "request_misread",
        "answer_forged",
        "left_over_printed",
        "polled_silence",
        "polled_idle",
        "polled_open_check",
    };
    return kNames[static_cast<std::size_t>(verdict)];
}

std::string_view NameOf(Remark remark) {
    static constexpr std::array<std::string_view, kRemarks> kNames = {
        "printed_by_cashier_later", "printed_by_reset_later", "left_open",     "left_locked",
        "left_unconnected",         "printed_and_locked",     "ended_by_plug", "open_for_paper",
    };
    return kNames[static_cast<std::size_t>(remark)];
}

std::string_view NameOf(Ending ending) {
    static constexpr std::array<std::string_view, kEndings> kNames = {
        "printed_at_once",
        "printed_again",
        "not_printed",
        "unknown",
    };
    return kNames[static_cast<std::size_t>(ending)];
}

void Figures::Add(const Figures& other) {
    runs += other.runs;
    checks += other.checks;
    calls += other.calls;
    exchanges += other.exchanges;
    violations += other.violations;
    virtual_s += other.virtual_s;
    AddTo(faults, other.faults);
    AddTo(verdicts, other.verdicts);
    AddTo(remarks, other.remarks);
    for (std::size_t code = 0; code < kErrorCodes; ++code) {
        AddTo(errors[code], other.errors[code]);
    }
    AddTo(endings, other.endings);
}

}  // namespace simulation
