#include "kkm/journal_line.h"

namespace kkm {
namespace {

constexpr double kLongestDeadlineS = 86400;

CLI::Option* AddPath(CLI::App& command, JournalOptions& options) {
    return command
        .add_option("--journal", options.path, "The till's journal; KKM_JOURNAL unless given")
        ->type_name("FILE")
        ->envname("KKM_JOURNAL");
}

void AddDeadline(CLI::App& command, JournalOptions& options) {
    command
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
    AddDeadline(check, options);
    check.add_flag("--again", options.again, "Try a key again that is not printed")->needs(key);
}

void AddJournalCommands(const AddCommand& add, const Address& address, JournalOptions& options,
                        const std::function<void()>& require_register, Streams& streams) {
    CLI::App* const outcome = add("outcome", "Tell what came of a check, from the journal",
                                  [&] { return RunOutcome(options, streams); });
    AddKey(*outcome, options)->required();
    AddPath(*outcome, options)->required();

    CLI::App* const resolve =
        add("resolve", "Find out at the register what came of a check", [&, require_register] {
            if (options.all == !options.key.empty()) {
                throw CLI::RequiredError("KEY or --all");
            }
            if (options.seen.empty()) {
                require_register();
            }
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
    AddPath(*resolve, options)->required();
    AddDeadline(*resolve, options);

    CLI::App* const journal = add("journal", "Show all checks of a journal and their outcomes",
                                  [&] { return RunJournal(options, streams); });
    AddPath(*journal, options)->required();
    journal->add_flag("--csv", options.csv, "Write comma-separated values");
}

}  // namespace kkm
