#include "kkm/command_line.h"

#include <CLI/CLI.hpp>

#include "kkm/check_command.h"
#include "kkm/query_commands.h"

namespace kkm {
namespace {

constexpr auto kAbout =
    "Prints checks on a Tarvo M5 cash register and reads its counters.\n"
    "The library writes its trace, VeskTarvoM5.log, in the folder that kkm is started in.";

constexpr auto kExamples = R"(Examples:
  kkm --device /dev/ttyUSB0 status
  kkm --port 1 counters --json
  kkm --device /dev/ttyUSB0 check check.json
  echo '{"lines":[{"name":"Хлеб","price":25.5}]}' | kkm --port 1 check -

Exit status:
  0  the check was printed; the figures were read
  1  something unforeseen
  2  the command line is wrong
  3  the check file cannot be read or is no check
  4  no register at that device
  5  the check was refused before anything was printed
  6  the check was not printed, or nobody knows: look at the paper
  7  no paper; the check is still open at the register
  8  a figure could not be read
)";

constexpr auto kCheckFormat = R"(The check is a JSON text:
  {
    "mode": "sale",          "sale" (unless given), "return" or "credit"
    "discount": -5,          per cent, -99 to 99; negative for a discount
    "cash": 500,             what the customer gave; exact unless given
    "lines": [
      {
        "name": "Хлеб",      what the paper shows
        "price": 25.50,      of one unit
        "quantity": 2,       1 unless given; 0.345 for weighed goods
        "section": 1         1 to 15; 1 unless given
      }
    ]
  }

It is printed when the cashier has the register ask for it. Until then Ctrl-C
gives up; from then on it waits for the end, so that no check is left half-way.
)";

struct CommandLine {
    Address address;
    std::string check_path;
    bool as_json = false;
    CLI::App* check = nullptr;
    CLI::App* status = nullptr;
    CLI::App* counters = nullptr;
};

void Describe(CLI::App& app, CommandLine& line) {
    app.name("kkm");
    app.footer(kExamples);
    app.set_version_flag("--version", "kkm " KKM_VERSION);
    app.require_subcommand(1);
    app.fallthrough();

    auto* const device =
        app.add_option("--device", line.address.device, "Serial device of the register")
            ->type_name("PATH");
    auto* const port =
        app.add_option("--port", line.address.port, "The same by number: 1 for /dev/ttyS0")
            ->type_name("N")
            ->check(CLI::Range(1, 255))
            ->excludes(device);
    device->excludes(port);

    line.check = app.add_subcommand("check", "Print a check");
    line.check->add_option("FILE", line.check_path, "The check, or - for standard input")
        ->required();
    line.check->footer(kCheckFormat);

    line.status = app.add_subcommand("status", "Show firmware, serial number, shift and counters");
    line.counters =
        app.add_subcommand("counters", "Show the counters, the grand total and the cash");
    for (CLI::App* query : {line.status, line.counters}) {
        query->add_flag("--json", line.as_json, "Print a JSON object");
    }
}

ExitStatus Execute(const CommandLine& line, Streams& streams) {
    if (*line.status) {
        return RunStatus(line.address, line.as_json, streams);
    }
    if (*line.counters) {
        return RunCounters(line.address, line.as_json, streams);
    }
    try {
        return RunCheck(line.address, ReadCheck(line.check_path, streams.in), streams);
    } catch (const CheckFileError& e) {
        streams.err << "kkm: " << e.what() << std::endl;
        return ExitStatus::bad_file;
    }
}

}  // namespace

ExitStatus Run(int argc, const char* const* argv, Streams& streams) {
    CLI::App app(kAbout);
    CommandLine line;
    try {
        Describe(app, line);
        app.parse(argc, argv);
        if (line.address.device.empty() && line.address.port == 0) {
            throw CLI::RequiredError("--device or --port");
        }
        return Execute(line, streams);
    } catch (const CLI::ParseError& e) {
        if (e.get_exit_code() == 0) {  // help or the version was asked for
            app.exit(e, streams.out, streams.err);
            return ExitStatus::done;
        }
        streams.err << "kkm: " << e.what() << " (kkm --help tells more)" << std::endl;
        return ExitStatus::usage;
    } catch (const std::exception& e) {
        streams.err << "kkm: " << e.what() << std::endl;
        return ExitStatus::failed;
    }
}

}  // namespace kkm
