#include "kkmcheck/kkmcheck.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <new>

#include "companion/till.h"

using kkmcheck::Advice;
using kkmcheck::Attempt;
using kkmcheck::BadCheck;
using kkmcheck::Check;
using kkmcheck::Counters;
using kkmcheck::Deadline;
using kkmcheck::Mode;
using kkmcheck::Name;
using kkmcheck::Outcome;
using kkmcheck::Reason;
using kkmcheck::Refusal;
using kkmcheck::Till;
using kkmcheck::WorkerStep;

struct kkmcheck_journal {
    std::unique_ptr<Till> till;
    std::string path;
    std::string error;
};

static_assert(static_cast<int>(WorkerStep::waiting) == KKMCHECK_WAITING &&
              static_cast<int>(WorkerStep::reading) == KKMCHECK_READING);

namespace {

constexpr int kUnknownNumber = -1;

template <std::size_t kSize>
void Copy(const std::string& text, char (&to)[kSize]) {
    const std::size_t count = std::min(text.size(), kSize - 1);
    std::copy_n(text.begin(), count, to);
    std::fill(to + count, to + kSize, '\0');
}

// How far the tape was read, when that is what is missing.
std::string TapeSoFar(const Attempt& attempt) {
    int read = attempt.tape_read;
    int all = attempt.tape_to_read;
    if (attempt.reason == Reason::tape_unread && attempt.before && attempt.after) {
        const std::string& records = attempt.records_compared;
        read = static_cast<int>(std::count(records.begin(), records.end(), '\n')) +
               (records.empty() ? 0 : 1);
        all = attempt.after->records - attempt.before->counters.records;
    }
    return all > 0 ? " " + std::to_string(read) + " of the tape's " + std::to_string(all) +
                         " new records are read."
                   : "";
}

std::string Sentence(const Attempt& attempt) {
    std::string text = std::string(Advice(attempt.reason)) + TapeSoFar(attempt);
    if (attempt.outcome != Outcome::unknown || !attempt.before) {
        return text;
    }
    char look[256];
    std::snprintf(look, sizeof look,
                  " To look for: a check of %d line%s, total %.2f, behind check %d of tape %d of "
                  "register %d.",
                  attempt.lines, attempt.lines == 1 ? "" : "s",
                  static_cast<double>(attempt.total_kopecks) / 100.0,
                  attempt.before->counters.checks, attempt.before->counters.tape,
                  attempt.before->counters.serial);
    return text + look;
}

void Fill(const Attempt& attempt, kkmcheck_outcome& outcome) {
    const Counters none{kUnknownNumber, kUnknownNumber, kUnknownNumber, kUnknownNumber};
    const Counters before = attempt.before ? attempt.before->counters : none;
    const Counters after = attempt.after.value_or(none);
    outcome.outcome = static_cast<int>(attempt.outcome);
    outcome.reason = static_cast<int>(attempt.reason);
    outcome.attempts = attempt.number;
    outcome.driver_result = attempt.driver_result.value_or(kUnknownNumber);
    outcome.driver_error = attempt.driver_error;
    outcome.firmware = attempt.firmware != 0 ? attempt.firmware : kUnknownNumber;
    outcome.serial_number = before.serial;
    outcome.tape_before = before.tape;
    outcome.checks_before = before.checks;
    outcome.records_before = before.records;
    outcome.tape_after = after.tape;
    outcome.checks_after = after.checks;
    outcome.records_after = after.records;
    outcome.first_record = attempt.first_record >= 0 ? attempt.first_record + 1 : kUnknownNumber;
    outcome.line_count = attempt.lines;
    outcome.total = static_cast<double>(attempt.total_kopecks) / 100.0;
    Copy(attempt.intended_at, outcome.intended_at);
    Copy(attempt.sending_at, outcome.sending_at);
    Copy(attempt.returned_at, outcome.returned_at);
    Copy(attempt.decided_at, outcome.decided_at);
    Copy(Sentence(attempt), outcome.text);
    Copy(attempt.records_compared, outcome.records);
}

int ResultOf(Refusal::Why why) {
    switch (why) {
        case Refusal::Why::other_content:
            return KKMCHECK_OTHER_CONTENT;
        case Refusal::Why::no_key:
            return KKMCHECK_NO_KEY;
        case Refusal::Why::busy:
            return KKMCHECK_BUSY;
        case Refusal::Why::worker:
            return KKMCHECK_WORKER;
        case Refusal::Why::argument:
            break;
    }
    return KKMCHECK_ARGUMENT;
}

// Nothing gets out of the library but numbers.
template <typename Action>
int Guarded(kkmcheck_journal* journal, bool arguments_are_good, Action action) {
    if (journal == nullptr) {
        return KKMCHECK_ARGUMENT;
    }
    try {
        journal->error.clear();
        if (!arguments_are_good) {
            journal->error = "an argument is missing";
            return KKMCHECK_ARGUMENT;
        }
        if (!journal->till) {
            journal->error = "the journal is not open: " + journal->path;
            return KKMCHECK_JOURNAL;
        }
        action(*journal->till);
        return KKMCHECK_OK;
    } catch (const Refusal& refusal) {
        journal->error = refusal.what();
        return ResultOf(refusal.why());
    } catch (const BadCheck& bad) {
        journal->error = bad.what();
        return KKMCHECK_ARGUMENT;
    } catch (const std::exception& error) {
        journal->error = error.what();
        return KKMCHECK_JOURNAL;
    }
}

bool IsKey(const char* key) {
    return key != nullptr && *key != '\0';
}

bool IsCheck(const kkmcheck_check* check) {
    if (check == nullptr || (check->lines == nullptr && check->line_count > 0)) {
        return false;
    }
    return std::all_of(check->lines, check->lines + std::max(check->line_count, 0),
                       [](const kkmcheck_line& line) { return line.name != nullptr; });
}

Check MakeCheck(const kkmcheck_check& from) {
    Check check;
    for (int i = 0; i < from.line_count; ++i) {
        const kkmcheck_line& line = from.lines[i];
        check.lines.push_back({line.name, line.price, line.quantity, line.section});
    }
    check.mode = static_cast<Mode>(from.mode);
    check.discount = from.discount;
    check.cash = from.cash;
    return check;
}

int Print(kkmcheck_journal* journal, const char* key, const kkmcheck_check* check, bool again,
          int deadline_ms, kkmcheck_outcome* outcome) {
    const bool good = IsKey(key) && IsCheck(check) && outcome != nullptr;
    return Guarded(journal, good, [&](Till& till) {
        Fill(till.Print(key, MakeCheck(*check), again, Deadline(deadline_ms)), *outcome);
    });
}

}  // namespace

int kkmcheck_open(const char* path, const char* device, kkmcheck_journal** journal) {
    if (journal == nullptr) {
        return KKMCHECK_ARGUMENT;
    }
    *journal = new (std::nothrow) kkmcheck_journal;
    if (*journal == nullptr) {
        return KKMCHECK_JOURNAL;
    }
    try {
        if (!IsKey(path)) {
            (*journal)->error = "an argument is missing";
            return KKMCHECK_ARGUMENT;
        }
        (*journal)->path = path;
        (*journal)->till = std::make_unique<Till>(path, device != nullptr ? device : "");
        return KKMCHECK_OK;
    } catch (const std::exception& error) {
        (*journal)->error = error.what();
        return KKMCHECK_JOURNAL;
    }
}

void kkmcheck_close(kkmcheck_journal* journal) {
    delete journal;
}

const char* kkmcheck_error(const kkmcheck_journal* journal) {
    return journal != nullptr ? journal->error.c_str() : "no journal";
}

int kkmcheck_print(kkmcheck_journal* journal, const char* key, const kkmcheck_check* check,
                   int deadline_ms, kkmcheck_outcome* outcome) {
    return Print(journal, key, check, false, deadline_ms, outcome);
}

int kkmcheck_print_again(kkmcheck_journal* journal, const char* key, const kkmcheck_check* check,
                         int deadline_ms, kkmcheck_outcome* outcome) {
    return Print(journal, key, check, true, deadline_ms, outcome);
}

int kkmcheck_resolve(kkmcheck_journal* journal, const char* key, int deadline_ms,
                     kkmcheck_outcome* outcome) {
    return Guarded(journal, IsKey(key) && outcome != nullptr,
                   [&](Till& till) { Fill(till.Resolve(key, Deadline(deadline_ms)), *outcome); });
}

int kkmcheck_recorded(kkmcheck_journal* journal, const char* key, kkmcheck_outcome* outcome) {
    return Guarded(journal, IsKey(key) && outcome != nullptr,
                   [&](Till& till) { Fill(till.Recorded(key), *outcome); });
}

int kkmcheck_set_by_hand(kkmcheck_journal* journal, const char* key, int verdict,
                         kkmcheck_outcome* outcome) {
    const bool good = IsKey(key) && outcome != nullptr &&
                      (verdict == KKMCHECK_PRINTED || verdict == KKMCHECK_NOT_PRINTED);
    return Guarded(journal, good, [&](Till& till) {
        Fill(till.SetByHand(key, static_cast<Outcome>(verdict)), *outcome);
    });
}

int kkmcheck_list(kkmcheck_journal* journal, kkmcheck_visit visit, void* context) {
    return Guarded(journal, visit != nullptr, [&](Till& till) {
        for (const Attempt& attempt : till.All()) {
            kkmcheck_outcome outcome;
            Fill(attempt, outcome);
            if (visit(context, attempt.key.c_str(), &outcome) != 0) {
                return;
            }
        }
    });
}

int kkmcheck_resolve_all(kkmcheck_journal* journal, int deadline_ms, kkmcheck_visit visit,
                         void* context, int* unknown) {
    return Guarded(journal, true, [&](Till& till) {
        const Deadline deadline(deadline_ms);
        int left = 0;
        bool wanted = true;
        for (const std::string& key : till.UndecidedKeys()) {
            const Attempt attempt = till.Resolve(key, deadline);
            left += attempt.outcome == Outcome::unknown ? 1 : 0;
            kkmcheck_outcome outcome;
            Fill(attempt, outcome);
            wanted = wanted && (visit == nullptr || visit(context, key.c_str(), &outcome) == 0);
        }
        if (unknown != nullptr) {
            *unknown = left;
        }
    });
}

int kkmcheck_on_step(kkmcheck_journal* journal, kkmcheck_step_told told, void* context) {
    return Guarded(journal, true, [&](Till& till) {
        till.OnStep([told, context](const WorkerStep& step) {
            if (told != nullptr) {
                told(context, step.kind, step.done, step.all);
            }
        });
    });
}

const char* kkmcheck_reason_name(int reason) {
    // The names are literals, so they end with a zero byte.
    return Name(static_cast<Reason>(reason)).data();
}
