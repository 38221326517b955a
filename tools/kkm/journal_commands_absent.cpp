// Built in place of the real ones where there is no SQLite of the word size.
#include "kkm/journal_commands.h"

namespace kkm {
namespace {

ExitStatus Absent(Streams& streams) {
    streams.err << "kkm: this kkm was built without libkkmcheck; it has no journal" << std::endl;
    return ExitStatus::failed;
}

}  // namespace

ExitStatus RunKeyedCheck(const Address& /*address*/, const CheckFile& /*check*/,
                         const JournalOptions& /*options*/, Streams& streams) {
    return Absent(streams);
}

ExitStatus RunOutcome(const JournalOptions& /*options*/, Streams& streams) {
    return Absent(streams);
}

ExitStatus RunResolve(const Address& /*address*/, const JournalOptions& /*options*/,
                      Streams& streams) {
    return Absent(streams);
}

ExitStatus RunJournal(const JournalOptions& /*options*/, Streams& streams) {
    return Absent(streams);
}

}  // namespace kkm
