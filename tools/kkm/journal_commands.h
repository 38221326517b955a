// kkm check --key, outcome, resolve, journal: checks with a journal, through libkkmcheck.
#pragma once

#include <string>

#include "kkm/check_file.h"
#include "kkm/connection.h"
#include "kkm/exit_status.h"
#include "kkm/streams.h"

namespace kkm {

struct JournalOptions {
    std::string path;
    std::string key;
    double deadline_s = 60;
    bool again = false;  // a check that was not printed is tried again
    bool all = false;    // every key whose outcome is not known
    std::string seen;    // what a person saw: "printed" or "not-printed"
    bool as_json = false;
    bool csv = false;
};

// Each gives 0 printed, 3 not printed, 4 unknown; other statuses mean that nothing was done.
ExitStatus RunKeyedCheck(const Address& address, const CheckFile& check,
                         const JournalOptions& options, Streams& streams);
ExitStatus RunOutcome(const JournalOptions& options, Streams& streams);
// Of all keys: 0 when every outcome is known now, else 4.
ExitStatus RunResolve(const Address& address, const JournalOptions& options, Streams& streams);
ExitStatus RunJournal(const JournalOptions& options, Streams& streams);

}  // namespace kkm
