#include "kkm/completion.h"

#include <CLI/CLI.hpp>

namespace kkm {
namespace {

using Candidates = std::vector<std::string>;

bool BeginsWith(const std::string& word, const std::string& beginning) {
    return word.compare(0, beginning.size(), beginning) == 0;
}

const CLI::App* CommandNamed(const CLI::App& app, const std::string& word) {
    for (const CLI::App* command : app.get_subcommands({})) {
        if (command->check_name(word)) {
            return command;
        }
    }
    return nullptr;
}

const CLI::Option* OptionNamed(const CLI::App& app, const CLI::App* command,
                               const std::string& word) {
    for (const CLI::App* owner : {command, &app}) {
        if (owner != nullptr) {
            if (const CLI::Option* const option = owner->get_option_no_throw(word)) {
                return option;
            }
        }
    }
    return nullptr;
}

// The words of a choice, of which the option's check says "{301,302}".
Candidates ChoicesOf(const CLI::Option& option) {
    const std::string text = option.get_type_name();
    const auto begin = text.find('{');
    const auto end = text.find('}');
    if (begin == std::string::npos || end == std::string::npos) {
        return {};
    }
    return CLI::detail::split(text.substr(begin + 1, end - begin - 1), ',');
}

void AddOptions(const CLI::App& app, Candidates& all) {
    for (const CLI::Option* option : app.get_options()) {
        for (const std::string& name : option->get_lnames()) {
            all.push_back("--" + name);
        }
    }
}

Candidates AllOf(const CLI::App& app, const CLI::App* command, bool options) {
    Candidates all;
    if (options) {
        if (command != nullptr) {
            AddOptions(*command, all);
        }
        if (command == nullptr || command->get_fallthrough()) {
            AddOptions(app, all);
        }
    } else if (command == nullptr) {
        for (const CLI::App* one : app.get_subcommands({})) {
            all.push_back(one->get_name());
        }
    }
    return all;
}

}  // namespace

std::vector<std::string> Complete(const CLI::App& app, const std::vector<std::string>& words) {
    const std::string last = words.empty() ? "" : words.back();
    const CLI::App* command = nullptr;
    const CLI::Option* asking = nullptr;  // for the value that comes next
    for (std::size_t i = 0; i + 1 < words.size(); ++i) {
        if (asking != nullptr) {
            asking = nullptr;
        } else if (words[i] == "--") {
            return {};
        } else if (BeginsWith(words[i], "-")) {
            const CLI::Option* const option = OptionNamed(app, command, words[i]);
            asking = option != nullptr && option->get_items_expected_max() > 0 ? option : nullptr;
        } else if (command == nullptr) {
            command = CommandNamed(app, words[i]);
        }
    }
    Candidates fitting;
    for (const std::string& one :
         asking != nullptr ? ChoicesOf(*asking) : AllOf(app, command, BeginsWith(last, "-"))) {
        const bool twice = std::find(fitting.begin(), fitting.end(), one) != fitting.end();
        if (BeginsWith(one, last) && !twice) {
            fitting.push_back(one);
        }
    }
    return fitting;
}

}  // namespace kkm
