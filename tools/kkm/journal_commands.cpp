#include "kkm/journal_commands.h"

#include <fstream>
#include <memory>
#include <vector>

#include "kkm/check_command.h"
#include "kkm/outcomes.h"
#include "kkm/progress.h"
#include "kkm/report.h"

namespace kkm {
namespace {

// The handle, and what is said when something does not work. Nothing was printed then.
class OpenJournal {
  public:
    enum class Kind { existing, any };
    OpenJournal(const JournalOptions& options, const std::string& device, Streams& streams,
                Kind kind = Kind::existing)
        : streams_(streams), as_json_(options.as_json) {
        // A mistyped name would make a new journal, in which nothing is known.
        if (kind == Kind::existing && !std::ifstream(options.path)) {
            throw CheckFileError("there is no journal " + options.path);
        }
        kkmcheck_journal* journal = nullptr;
        result_ = kkmcheck_open(options.path.c_str(), device.c_str(), &journal);
        journal_.reset(journal);
    }
    kkmcheck_journal* get() const { return journal_.get(); }
    bool Opened() const { return result_ == KKMCHECK_OK; }

    // The status of a call of the library that gave `result`.
    ExitStatus Failed(int result) const {
        const ExitStatus status = result == KKMCHECK_JOURNAL  ? ExitStatus::bad_file
                                  : result == KKMCHECK_WORKER ? ExitStatus::failed
                                                              : ExitStatus::refused;
        return Report(status, kkmcheck_error(journal_.get()), as_json_, streams_);
    }
    ExitStatus FailedToOpen() const { return Failed(result_); }

  private:
    struct Close {
        void operator()(kkmcheck_journal* journal) const { kkmcheck_close(journal); }
    };

    Streams& streams_;
    bool as_json_;
    int result_ = KKMCHECK_OK;
    std::unique_ptr<kkmcheck_journal, Close> journal_;
};

// The steps of the worker, shown as they go.
class ShownSteps {
  public:
    ShownSteps(const OpenJournal& journal, bool as_json, Streams& streams)
        : journal_(journal),
          progress_(as_json ? streams.err : streams.out,
                    as_json ? streams.err_terminal : streams.out_terminal) {
        kkmcheck_on_step(journal_.get(), &ShownSteps::Told, this);
    }
    ~ShownSteps() { kkmcheck_on_step(journal_.get(), nullptr, nullptr); }
    ShownSteps(const ShownSteps&) = delete;
    ShownSteps& operator=(const ShownSteps&) = delete;

    void End() { progress_.Erase(); }

  private:
    static void Told(void* steps, int step, int /*done*/, int all) {
        static_cast<ShownSteps*>(steps)->Show(step, all);
    }
    void Show(int step, int all) {
        if (step == shown_) {
            return;
        }
        shown_ = step;
        switch (step) {
            case KKMCHECK_WAITING:
                progress_.Step("waiting for the register to ask for the check");
                break;
            case KKMCHECK_SENDING:
                progress_.Step("sending the lines and printing");
                break;
            case KKMCHECK_COMPARING:
                progress_.Step("comparing the register's counters and tape");
                break;
            case KKMCHECK_READING:
                progress_.Step("reading " + std::to_string(all) + " records of the control tape");
                break;
            default:
                break;
        }
    }

    const OpenJournal& journal_;
    Progress progress_;
    int shown_ = 0;
};

ExitStatus StatusOf(int verdict) {
    switch (verdict) {
        case KKMCHECK_PRINTED:
            return ExitStatus::done;
        case KKMCHECK_NOT_PRINTED:
            return ExitStatus::not_printed;
        default:
            return ExitStatus::unknown;
    }
}

int Milliseconds(double seconds) {
    return static_cast<int>(seconds * 1000);
}

int Keep(void* context, const char* key, const kkmcheck_outcome* outcome) {
    static_cast<std::vector<KeyedOutcome>*>(context)->push_back({key, *outcome});
    return 0;
}

ExitStatus Show(const OpenJournal& journal, int result, const KeyedOutcome& found, bool as_json,
                Streams& streams) {
    if (result != KKMCHECK_OK) {
        return journal.Failed(result);
    }
    WriteOutcome(found, as_json, streams.out);
    return StatusOf(found.outcome.outcome);
}

void WriteAll(const std::vector<KeyedOutcome>& outcomes, const JournalOptions& options,
              std::ostream& out) {
    if (options.as_json) {
        WriteOutcomesAsJson(outcomes, out);
    } else if (options.csv) {
        WriteOutcomesAsCsv(outcomes, out);
    } else {
        WriteOutcomesAsTable(outcomes, out);
    }
}

ExitStatus ResolveAll(const OpenJournal& journal, const JournalOptions& options, Streams& streams) {
    std::vector<KeyedOutcome> found;
    int unknown = 0;
    const int result = kkmcheck_resolve_all(journal.get(), Milliseconds(options.deadline_s), Keep,
                                            &found, &unknown);
    if (result != KKMCHECK_OK) {
        return journal.Failed(result);
    }
    WriteAll(found, options, streams.out);
    return unknown == 0 ? ExitStatus::done : ExitStatus::unknown;
}

}  // namespace

ExitStatus RunKeyedCheck(const Address& address, const CheckFile& check,
                         const JournalOptions& options, Streams& streams) {
    const std::vector<std::string> names = RegisterNames(check, streams.err);
    std::vector<kkmcheck_line> lines;
    lines.reserve(names.size());
    for (std::size_t i = 0; i < names.size(); ++i) {
        const CheckLine& line = check.lines[i];
        lines.push_back({names[i].c_str(), line.price, line.quantity, line.section});
    }
    const kkmcheck_check content{lines.data(), static_cast<int>(lines.size()),
                                 static_cast<int>(check.mode), check.discount,
                                 check.cash.value_or(0)};
    const OpenJournal journal(options, address.Device(), streams, OpenJournal::Kind::any);
    if (!journal.Opened()) {
        return journal.FailedToOpen();
    }
    const auto print = options.again ? kkmcheck_print_again : kkmcheck_print;
    KeyedOutcome found{options.key, {}};
    ShownSteps steps(journal, options.as_json, streams);
    const int result = print(journal.get(), options.key.c_str(), &content,
                             Milliseconds(options.deadline_s), &found.outcome);
    steps.End();
    return Show(journal, result, found, options.as_json, streams);
}

ExitStatus RunOutcome(const JournalOptions& options, Streams& streams) {
    const OpenJournal journal(options, "", streams);
    if (!journal.Opened()) {
        return journal.FailedToOpen();
    }
    KeyedOutcome found{options.key, {}};
    const int result = kkmcheck_recorded(journal.get(), options.key.c_str(), &found.outcome);
    return Show(journal, result, found, options.as_json, streams);
}

ExitStatus RunResolve(const Address& address, const JournalOptions& options, Streams& streams) {
    const bool by_hand = !options.seen.empty();
    const OpenJournal journal(options, by_hand ? "" : address.Device(), streams);
    if (!journal.Opened()) {
        return journal.FailedToOpen();
    }
    if (options.all) {
        return ResolveAll(journal, options, streams);
    }
    KeyedOutcome found{options.key, {}};
    ShownSteps steps(journal, options.as_json, streams);
    const int result = by_hand
                           ? kkmcheck_set_by_hand(journal.get(), options.key.c_str(),
                                                  options.seen == "printed" ? KKMCHECK_PRINTED
                                                                            : KKMCHECK_NOT_PRINTED,
                                                  &found.outcome)
                           : kkmcheck_resolve(journal.get(), options.key.c_str(),
                                              Milliseconds(options.deadline_s), &found.outcome);
    steps.End();
    return Show(journal, result, found, options.as_json, streams);
}

ExitStatus RunJournal(const JournalOptions& options, Streams& streams) {
    const OpenJournal journal(options, "", streams);
    if (!journal.Opened()) {
        return journal.FailedToOpen();
    }
    std::vector<KeyedOutcome> all;
    const int result = kkmcheck_list(journal.get(), Keep, &all);
    if (result != KKMCHECK_OK) {
        return journal.Failed(result);
    }
    WriteAll(all, options, streams.out);
    return ExitStatus::done;
}

}  // namespace kkm
