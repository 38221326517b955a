#include "options.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <charconv>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

namespace virtual_register {
namespace {

constexpr const char* kDescription =
    "A Tarvo M5 cash register in software. It opens a pseudo terminal, prints the name of the tty\n"
    "to connect to (\"tty /dev/pts/N\") as its first line, and then what comes out on its paper.";

constexpr const char* kFooter =
    R"(A scenario has one line for each thing that goes wrong; # begins a remark:
  when COMMAND [WHICH] EFFECT   as the command comes for the n-th time
  at TIME ACT                   so long after the host's first request
  COMMAND   sale, status, close-check, reset-status ... as in the log, 0x21, or any
  WHICH     3, 2-5 or always; the first time unless given
  EFFECT    lose request | lose answer | delay TIME | cut BYTES | garble [BYTE] |
            refuse REPLY | busy POLLS | ACT | then ACT
  ACT       host | barcode DIGITS | cancel | key CODE | sell PRICE NAME | paper out |
            paper in [LINES] | power off | power on | shift open | shift close | quit
  TIME      300ms, 2.5s

Examples:
  tarvo-register --firmware 310 --cashier auto
  tarvo-register --baud 57600 --memory shop.mem --paper receipts.txt --log -
  tarvo-register --cashier auto --scenario lost-answer.scenario --record session.txt
  tarvo-register --replay session.txt
  tarvo-register receipt --memory shop.mem --output last.png

Exit status: 0 ended as told, 1 something failed, 3 the host of a replay said something
else than recorded, above 100 the command line is wrong.
At the prompt, type help. Ctrl-C ends the program; with --memory nothing is forgotten.)";

// What the command line says in another form than the program wants.
struct Raw {
    // Bytes would be read as characters.
    unsigned net_number = 1;
    unsigned section = 1;
    std::vector<std::string> taxes;
    std::string cashier = ::isatty(STDIN_FILENO) != 0 ? "prompt" : "off";
    CLI::Option* firmware = nullptr;
    CLI::Option* serial = nullptr;
};

void add_register_options(CLI::App& app, Options& options, Raw& raw) {
    raw.firmware = app.add_option("--firmware", options.identity.firmware,
                                  "300, 301, 302, 303, 310, 312 or 400")
                       ->type_name("NUMBER")
                       ->check(CLI::IsMember({300, 301, 302, 303, 310, 312, 400}).description(""))
                       ->capture_default_str();
    app.add_option("--net", raw.net_number, "Network number")
        ->type_name("1..255")
        ->check(CLI::Range(1, 255).description(""))
        ->capture_default_str();
    raw.serial =
        app.add_option("--serial", options.identity.serial, "Serial number, up to 8 characters")
            ->check([](const std::string& text) {
                return text.size() <= 8 ? std::string() : "at most 8 characters";
            })
            ->capture_default_str();
    app.add_option("--section", raw.section, "Section of a new register")
        ->type_name("1..255")
        ->check(CLI::Range(1, 255).description(""))
        ->capture_default_str();
    app.add_option("--tax", raw.taxes, "Tax setting of a new register: number 0 to 16")
        ->type_name("N=BYTE");
    app.add_option("--drawer", options.identity.drawer_kopecks,
                   "Kopecks in the drawer of a new register")
        ->type_name("KOPECKS")
        ->capture_default_str();
    app.add_option("--memory", options.memory_file,
                   "Keep the register's memory in this file (made when missing)")
        ->type_name("FILE");
    app.add_option("--cashier", raw.cashier,
                   "Who asks the host for checks: auto, prompt (who types here)\n"
                   "or off; prompt at a terminal, otherwise off")
        ->type_name("WHO")
        ->check(CLI::IsMember({"auto", "prompt", "off"}).description(""));
    app.add_option("--print-ms", options.print_ms,
                   "Milliseconds that each line of a receipt takes, register deaf")
        ->type_name("MS")
        ->check(CLI::Range(0, 60000).description(""))
        ->capture_default_str();
}

void add_session_options(CLI::App& app, Options& options) {
    app.add_option("--scenario", options.scenario_file, "What goes wrong, and when; below")
        ->type_name("FILE");
    app.add_option("--record", options.record_file, "Write the conversation into this file, anew")
        ->type_name("FILE");
    app.add_option("--replay", options.replay_file, "Be no register but a recorded conversation")
        ->type_name("FILE");
}

// A recording answers for itself.
void refuse_beside_replay(const CLI::App& app) {
    for (const CLI::Option* option : app.get_options()) {
        const std::string name = option->get_name();
        const bool goes_with = name == "--replay" || name == "--link" || name == "--log" ||
                               name == "--pace" || name == "--quiet";
        if (option->count() > 0 && !goes_with) {
            throw CLI::ExcludesError(name, "--replay");
        }
    }
}

void add_program_options(CLI::App& app, Options& options) {
    app.add_option("--baud", options.baud, "Speed that it answers at; any other is noise")
        ->type_name("9600|57600")
        ->check(CLI::IsMember({9600, 57600}).description(""))
        ->capture_default_str();
    app.add_flag("--pace", options.pace, "Give bytes the time that they take on a real line");
    app.add_option("--link", options.link, "Make this symbolic link to the tty while running")
        ->type_name("PATH");
    app.add_option("--paper", options.paper_file, "Append what is printed, as UTF-8")
        ->type_name("FILE");
    app.add_option("--receipt-dir", options.receipt_folder,
                   "Keep each receipt in this folder as text, SVG and PNG")
        ->type_name("DIR");
    app.add_option("--log", options.log_file,
                   "Append the exchanges in words; - for the standard error")
        ->type_name("FILE|-");
    app.add_option("--once", options.once,
                   "End after so many checks, once the host has closed the tty")
        ->type_name("N")
        ->check(CLI::Range(1, 1'000'000).description(""));
    app.add_flag("--quiet", options.quiet, "Show no paper on the standard output");
}

void set_taxes(const std::vector<std::string>& texts, Identity& identity) {
    for (const std::string& text : texts) {
        unsigned number = 0;
        std::uint8_t value = 0;
        const char* end = text.data() + text.size();
        const auto name = std::from_chars(text.data(), end, number);
        const bool named = name.ec == std::errc() && name.ptr != end && *name.ptr == '=' &&
                           number < identity.taxes.size();
        const auto byte = std::from_chars(named ? name.ptr + 1 : end, end, value);
        if (byte.ec != std::errc() || byte.ptr != end) {
            throw CLI::ValidationError("--tax", text + " is not N=BYTE with N from 0 to 16");
        }
        identity.taxes[number] = value;
    }
}

// The format that was asked for, or the one that the output's name ends with.
ReceiptFormat to_format(const std::string& asked, const std::string& output) {
    const std::string ending =
        asked.empty() ? std::filesystem::path(output).extension().string() : "." + asked;
    if (!ending.empty() && ending != ".txt" && ending != ".svg" && ending != ".png") {
        throw CLI::ValidationError("--output", output + " ends with neither .txt, .svg nor .png; " +
                                                   "--format says what it is to be");
    }
    return ending == ".svg"   ? ReceiptFormat::svg
           : ending == ".png" ? ReceiptFormat::png
                              : ReceiptFormat::text;
}

CLI::App* add_receipt_command(CLI::App& app, ReceiptOptions& options, std::string& format) {
    CLI::App* const receipt = app.add_subcommand(
        "receipt", "Show the receipt of the last check in a memory file; needs no tty");
    receipt->footer("");
    receipt->option_defaults()->group("Options");
    receipt->add_option("--memory", options.memory_file, "The memory file")
        ->type_name("FILE")
        ->required();
    receipt->add_option("--output", options.output, "Write into this file")->type_name("FILE");
    receipt
        ->add_option("--format", format,
                     "txt, svg or png; as the name of the output ends unless given")
        ->type_name("FORMAT")
        ->check(CLI::IsMember({"txt", "svg", "png"}).description(""));
    return receipt;
}

}  // namespace

ParsedOptions parse_options(int argc, char** argv) {
    Options options;
    Raw raw;
    CLI::App app(kDescription, "tarvo-register");
    app.footer(kFooter);
    app.get_formatter()->column_width(34);
    app.get_option("--help")->group("The line and the program");
    app.set_version_flag("--version", "tarvo-register " TARVO_REGISTER_VERSION)
        ->group("The line and the program");
    app.option_defaults()->group("The register");
    add_register_options(app, options, raw);
    app.option_defaults()->group("The line and the program");
    add_program_options(app, options);
    app.option_defaults()->group("The session");
    add_session_options(app, options);
    ReceiptOptions receipt;
    std::string format;
    const CLI::App* const receipt_command = add_receipt_command(app, receipt, format);
    try {
        app.parse(argc, argv);
        if (receipt_command->parsed()) {
            receipt.format = to_format(format, receipt.output);
            return {std::nullopt, receipt, 0};
        }
        set_taxes(raw.taxes, options.identity);
        if (!options.replay_file.empty()) {
            refuse_beside_replay(app);
        }
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() != 0) {
            std::cerr << "tarvo-register: ";
        }
        return {std::nullopt, std::nullopt, app.exit(error)};
    }
    options.cashier = raw.cashier == "auto"     ? Cashier::automatic
                      : raw.cashier == "prompt" ? Cashier::prompt
                                                : Cashier::off;
    options.net_number = static_cast<std::uint8_t>(raw.net_number);
    options.identity.section = static_cast<std::uint8_t>(raw.section);
    options.firmware_given = raw.firmware->count() > 0;
    options.serial_given = raw.serial->count() > 0;
    return {options, std::nullopt, 0};
}

}  // namespace virtual_register
