#include "kkm/journal_line.h"

#include <cstdlib>

namespace kkm {
namespace {

constexpr double kLongestDeadlineS = 86400;

// The environment is asked later: CLI11 would let it overrule the command line, since the commands
// share the path.
void AddPath(CLI::App& command, JournalOptions& options) {
    command.add_option("--journal", options.path, "The till's journal; KKM_JOURNAL unless given")
        ->type_name("FILE");
}

CLI::Option* AddDeadline(CLI::App& command, JournalOptions& options) {
    return command
        .add_option("--deadline", options.deadline_s, "Seconds after which the answer is unknown")
        ->type_name("S")
        ->check(CLI::Range(0.001, kLongestDeadlineS))
        ->capture_default_str();
}

CLI::Option* AddKey(CLI::App& command, JournalOptions& options) {
    return command.add_option("KEY", options.key, "The check's key");
}

}  // namespace

void AddKeyOptions(CLI::App& check, JournalOptions& options) {
    auto* const key =
        check.add_option("--key", options.key, "Print it once under this key, with a journal")
            ->type_name("K");
    AddPath(check, options);
    AddDeadline(check, options)->needs(key);
    key->excludes("--dry-run");
    check.add_flag("--again", options.again, "Try a key again that is not printed")->needs(key);
}

void NameJournal(JournalOptions& options) {
    if (const char* const usual = std::getenv("KKM_JOURNAL"); options.path.empty() && usual) {
        options.path = usual;
    }
    if (options.path.empty()) {
        throw CLI::RequiredError("--journal");
    }
}

void AddJournalCommands(const AddCommand& add, const Address& address, JournalOptions& options,
                        const std::function<void()>& require_register, Streams& streams) {
    CLI::App* const outcome = add("outcome", "Tell what came of a check, from the journal", [&] {
        NameJournal(options);
        return RunOutcome(options, streams);
    });
    AddKey(*outcome, options)->required();
    AddPath(*outcome, options);

    CLI::App* const resolve =
        add("resolve", "Find out at the register what came of a check", [&, require_register] {
            if (options.all == !options.key.empty()) {
                throw CLI::RequiredError("KEY or --all");
            }
            if (options.seen.empty()) {
                require_register();
            }
            NameJournal(options);
            return RunResolve(address, options, streams);
        });
    CLI::Option* const key = AddKey(*resolve, options);
    CLI::Option* const all =
        resolve->add_flag("--all", options.all, "Every check whose outcome is not known");
    resolve->add_option("--seen", options.seen, "What a person saw on the paper, for the journal")
        ->type_name("WHAT")
        ->check(CLI::IsMember({"printed", "not-printed"}))
        ->excludes(all)
        ->needs(key);
    resolve->add_flag("--csv", options.csv, "With --all, write comma-separated values");
    AddPath(*resolve, options);
    AddDeadline(*resolve, options);

    CLI::App* const journal =
        add("journal", "Show all checks of a journal and their outcomes", [&] {
            NameJournal(options);
            return RunJournal(options, streams);
        });
    AddPath(*journal, options);
    journal->add_flag("--csv", options.csv, "Write comma-separated values");
}

}  // namespace kkm
