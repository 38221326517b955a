#include "simulation/exchange_log.h"

#include <algorithm>
#include <cerrno>
#include <cinttypes>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "virtual_register/codes.h"

namespace simulation {
namespace {

// What a call said besides its error code would need floating-point texts, so it is left out: the
// log has to be the same everywhere.
class Teller {
  public:
    Teller(const Scenario& scenario, const Journal& journal)
        : scenario_(scenario), journal_(journal) {}

    std::string Tell(const RunResult& result) {
        TellPlan();
        for (const Event& event : journal_.events()) {
            TellEvent(event);
        }
        EndExchange("");
        if (!result.violation.empty()) {
            Add("VIOLATION in %s: %s\n", result.call.c_str(), result.violation.c_str());
        }
        return std::move(text_);
    }

  private:
    __attribute__((format(printf, 2, 3))) void Add(const char* format, ...) {
        char line[512];
        std::va_list rest;
        va_start(rest, format);
        std::vsnprintf(line, sizeof line, format, rest);
        va_end(rest);
        text_ += line;
    }

    void Stamp(Micros at) {
        const Micros since = at - kStart;
        Add("%6" PRIu64 ".%06" PRIu64 "  ", since / 1'000'000, since % 1'000'000);
    }

    void AddHex(const unsigned char* bytes, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            Add(i == 0 ? "%02X" : " %02X", bytes[i]);
        }
    }

    void TellPlan() {
        Add("seed %" PRIu64 "\n", scenario_.seed);
        Add("register: firmware %d, %d baud, number %d, the driver asks for %s\n",
            scenario_.kkm.firmware, scenario_.line.baud, scenario_.line.net_number,
            scenario_.host.asks_for_number ? "it" : "any");
        for (const Fault& fault : scenario_.faults.faults) {
            Add("fault: %s at ", std::string(NameOf(fault.kind)).c_str());
            if (fault.command == 0) {
                Add("exchange %u", fault.at);
            } else {
                Add("request %02X number %u", fault.command, fault.at);
            }
            Add(" (%u, %u)\n", fault.a, fault.b);
        }
        for (const Burst& burst : scenario_.faults.bursts) {
            Add("faults: %s at exchanges %u to %u, %u of 1000\n",
                burst.any_kind ? "any kind" : std::string(NameOf(burst.kind)).c_str(), burst.first,
                burst.last, burst.per_mille);
        }
    }

    void TellEvent(const Event& event) {
        const unsigned char* const bytes = journal_.bytes(event.bytes_at);
        switch (event.kind) {
            case EventKind::write:
                Begin(event, bytes);
                return;
            case EventKind::read_byte:
                if (event.result >= 0) {
                    read_.push_back(static_cast<unsigned char>(event.result));
                } else {
                    EndExchange(event.result == kEndOfFile ? "end of file" : "read error");
                }
                return;
            case EventKind::poll:
                if (event.result == 0) {
                    EndExchange("time out");
                } else if (event.result < 0 && event.result != -EINTR) {
                    EndExchange("wait failed");
                }
                return;
            case EventKind::flush:
                EndExchange("");
                return;
            case EventKind::sleep:
                TellPause(event);
                return;
            default:
                EndExchange("");
                TellOther(event, bytes);
                return;
        }
    }

    void Begin(const Event& event, const unsigned char* bytes) {
        EndExchange("");
        open_ = true;
        Stamp(event.at);
        Add("#%-4u ", exchange_++);
        AddHex(bytes, event.bytes_count);
        if (event.bytes_count > 3) {
            const auto* row = virtual_register::find_command(bytes[3]);
            Add("  %s", row == nullptr ? "?" : row->name);
        }
        if (event.result != event.bytes_count) {
            EndExchange(event.result < 0 ? "write error" : "short write");
        }
    }

    void EndExchange(const char* how) {
        if (open_) {
            Add("\n%15s-> ", "");
            AddHex(read_.data(), read_.size());
            if (read_.size() > 3 && virtual_register::state_name(read_[3]) != nullptr) {
                Add("  %s", virtual_register::state_name(read_[3]));
            }
            Add("%s%s\n", read_.empty() ? "" : "  ", how);
        }
        open_ = false;
        read_.clear();
    }

    void TellPause(const Event& event) {
        constexpr std::int32_t kOrdinaryUs = 10'000;
        if (event.argument > kOrdinaryUs) {
            EndExchange("");
            Stamp(event.at);
            Add("      pause %d ms\n", event.argument / 1000);
        }
    }

    void TellOther(const Event& event, const unsigned char* bytes) {
        switch (event.kind) {
            case EventKind::open_port:
                Stamp(event.at);
                Add("open %.*s%s\n", event.bytes_count, reinterpret_cast<const char*>(bytes),
                    event.result == 0 ? "" : " failed");
                return;
            case EventKind::set_line:
                Stamp(event.at);
                Add("line 0x%x%s\n", static_cast<unsigned>(event.argument),
                    event.result == 0 ? "" : " failed");
                return;
            case EventKind::call:
                Stamp(event.at);
                Add("host calls %s(", NameOf(CallOf(event).kind));
                Add("%d)\n", CallOf(event).number);
                return;
            case EventKind::result:
                Stamp(event.at);
                Add("host gets %d, last error %d\n", event.result, event.argument);
                return;
            case EventKind::fault:
            case EventKind::act:
                Stamp(event.at);
                Add("      ! %s%s\n",
                    std::string(NameOf(static_cast<FaultKind>(event.argument))).c_str(),
                    event.kind == EventKind::act && event.result == 0 ? " (not let)" : "");
                return;
            case EventKind::misread:
                Stamp(event.at);
                Add("      ! the register understands ");
                AddHex(bytes, event.bytes_count);
                Add("\n");
                return;
            case EventKind::registered:
                Stamp(event.at);
                Add("      CHECK %d IS REGISTERED\n", event.argument);
                return;
            case EventKind::failure:
                Stamp(event.at);
                Add("      the driver cleans up\n");
                return;
            case EventKind::terminate:
                Stamp(event.at);
                Add("      the host ends the loop\n");
                return;
            case EventKind::unplug:
                Stamp(event.at);
                Add("      the plug is pulled\n");
                return;
            default:
                return;
        }
    }

    const Call& CallOf(const Event& event) const {
        return scenario_.host.calls[static_cast<std::size_t>(event.argument)];
    }

    static constexpr Micros kStart = 1'000'000'000;

    const Scenario& scenario_;
    const Journal& journal_;
    std::string text_;
    std::vector<unsigned char> read_;
    unsigned exchange_ = 0;
    bool open_ = false;
};

}  // namespace

std::string TellRun(const Scenario& scenario, const Journal& journal, const RunResult& result) {
    return Teller(scenario, journal).Tell(result);
}

}  // namespace simulation
