// What the command line says about journals.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>

#include "kkm/journal_commands.h"

namespace kkm {

// Adds a command of the name, with its description and what it does.
using AddCommand =
    std::function<CLI::App*(const char* name, const char* about, std::function<ExitStatus()> run)>;

// --key and its fellows of the command that prints checks.
void AddKeyOptions(CLI::App& check, JournalOptions& options);
// Takes the journal that KKM_JOURNAL names where the command line names none. Throws when neither
// does.
void NameJournal(JournalOptions& options);
// outcome, resolve and journal. `require_register` throws when no register was named.
void AddJournalCommands(const AddCommand& add, const Address& address, JournalOptions& options,
                        const std::function<void()>& require_register, Streams& streams);

}  // namespace kkm
