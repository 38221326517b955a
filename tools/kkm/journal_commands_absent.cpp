// Built in place of the real ones where there is no SQLite of the word size.
#include "kkm/journal_commands.h"
#include "kkm/report.h"

namespace kkm {
namespace {

ExitStatus Absent(const JournalOptions& options, Streams& streams) {
    return Report(ExitStatus::failed, "this kkm was built without libkkmcheck; it has no journal",
                  options.as_json, streams);
}

}  // namespace

ExitStatus RunKeyedCheck(const Address& /*address*/, const CheckFile& /*check*/,
                         const JournalOptions& options, Streams& streams) {
    return Absent(options, streams);
}

ExitStatus RunOutcome(const JournalOptions& options, Streams& streams) {
    return Absent(options, streams);
}

ExitStatus RunResolve(const Address& /*address*/, const JournalOptions& options, Streams& streams) {
    return Absent(options, streams);
}

ExitStatus RunJournal(const JournalOptions& options, Streams& streams) {
    return Absent(options, streams);
}

}  // namespace kkm
