#include "kkm/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <functional>
#include <string_view>

#include "kkm/check_command.h"
#include "kkm/completion.h"
#include "kkm/doctor.h"
#include "kkm/dry_run.h"
#include "kkm/dump_command.h"
#include "kkm/explain.h"
#include "kkm/journal_line.h"
#include "kkm/open_check.h"
#include "kkm/query_commands.h"
#include "kkm/report.h"
#include "kkm/run_command.h"
#include "kkm/service_commands.h"
#include "kkm/tape_command.h"
#include "kkm/watch_command.h"

namespace kkm {
namespace {

constexpr auto kAbout =
    "The service tool of Tarvo M5 cash registers: prints checks, reads what a register holds, "
    "finds\n"
    "out what keeps a till from printing. The driver writes its trace, VeskTarvoM5.log, in the\n"
    "folder that kkm is started in.";

constexpr auto kExamples = R"(Examples:
  kkm --device /dev/ttyUSB0 doctor
  kkm --device /dev/ttyUSB0 check check.json
  kkm --port 1 counters --json
  kkm --port 1 tape --from 10 --csv
  kkm --port 1 dump till.mem && tarvo-register --memory till.mem
  echo '{"lines":[{"name":"Хлеб","price":25.5}]}' | kkm check --dry-run -
  kkm --port 1 check check.json --key order-4711 --journal till1.journal
  kkm --port 1 resolve --all --journal till1.journal
  kkm explain 34
  kkm explain VeskTarvoM5.log
  kkm --device /dev/ttyUSB0 run --port 2 -- ./till

Exit status:
  0    done; with check: the check was printed
  1    something unforeseen
  2    the command line is wrong
  3    the check was not printed
  4    nobody knows whether the check was printed: look at the paper
  5    a file cannot be read or is not what it should be
  6    no register at that device
  7    refused; nothing was printed
  8    no paper; the check is still open at the register
  9    a figure could not be read
  10   doctor found something to mend
  125  run could not give the program its device; 126, 127 could not start it
  130  Ctrl-C while check without --key waited; nothing was printed
)";

constexpr auto kWhichRegister =
    R"(The register: kkm --device PATH or kkm --port N; --json writes JSON.
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

constexpr auto kRunAbout =
    R"(The program finds the device as its port N, /dev/ttyS(N-1), and needs no change:
a USB adapter or the virtual register stands in for a built-in port. It runs in
a mount namespace of its own; nothing changes for other programs. kkm gives the
program's exit status.
)";

// Everything that the command line says, and what to do about it.
class CommandLine {
  public:
    explicit CommandLine(Streams& streams);

    ExitStatus Run(int argc, const char* const* argv);
    CLI::App& app() { return app_; }
    bool PrintsACheck() const { return app_.got_subcommand("check") && !dry_run_; }

  private:
    CLI::App* Add(const std::string& name, const std::string& about,
                  std::function<ExitStatus()> run, bool needs_register = true);
    void AddCheck();
    CLI::App* AddLooking(const std::string& name, const std::string& about,
                         std::function<ExitStatus()> run);
    void AddQueries();
    void AddDump();
    void AddServices();
    void AddTools();
    void RequireRegister() const;
    ExitStatus RunWithJournal(const CheckFile& file);

    Streams& streams_;
    CLI::App app_{kAbout};
    std::function<ExitStatus()> run_;
    bool needs_register_ = false;

    Address address_;
    bool as_json_ = false;
    std::string path_;
    bool dry_run_ = false;
    JournalOptions journal_;
    int firmware_ = 303;
    TapeRange range_;
    bool csv_ = false;
    std::string text_;
    int times_ = 1;
    bool clear_ = false;
    WatchOptions watch_;
    DumpOptions dump_;
    std::string directory_;
    std::string what_;
    RunOptions host_;
};

CommandLine::CommandLine(Streams& streams) : streams_(streams) {
    app_.name("kkm");
    app_.set_version_flag("--version", "kkm " KKM_VERSION);
    app_.require_subcommand(1);
    app_.fallthrough();
    auto* const device =
        app_.add_option("--device", address_.device, "Serial device of the register")
            ->type_name("PATH");
    auto* const port =
        app_.add_option("--port", address_.port, "The same by number: 1 for /dev/ttyS0")
            ->type_name("N")
            ->check(CLI::Range(1, 255))
            ->excludes(device);
    device->excludes(port);
    app_.add_flag("--json", as_json_, "Write JSON");
    AddCheck();
    AddQueries();
    AddDump();
    AddServices();
    AddTools();
    app_.footer(kExamples);  // behind the commands, which would take it over
}

CLI::App* CommandLine::Add(const std::string& name, const std::string& about,
                           std::function<ExitStatus()> run, bool needs_register) {
    CLI::App* const command = app_.add_subcommand(name, about);
    command->callback([this, run = std::move(run), needs_register] {
        run_ = run;
        needs_register_ = needs_register;
    });
    if (needs_register) {
        command->footer(kWhichRegister);
    }
    return command;
}

void CommandLine::AddCheck() {
    CLI::App* const check = Add(
        "check", "Print a check, or show it before it is printed",
        [this] {
            const CheckFile file = ReadCheck(path_, streams_.in);
            if (dry_run_) {
                return DryRun(file, firmware_, as_json_, streams_);
            }
            RequireRegister();
            if (!journal_.key.empty()) {
                return RunWithJournal(file);
            }
            if (!journal_.path.empty()) {  // it would be printed unprotected
                throw CLI::RequiresError("--journal", "--key");
            }
            return RunCheck(address_, file, as_json_, streams_);
        },
        false);
    check->add_option("FILE", path_, "The check, or - for standard input")
        ->type_name("")
        ->required();
    CLI::Option* const dry_run =
        check->add_flag("--dry-run", dry_run_, "Show the receipt as it will be; send nothing");
    check->add_option("--firmware", firmware_, "Firmware for --dry-run")
        ->needs(dry_run)
        ->check(CLI::IsMember({301, 302, 303, 310, 400}))
        ->capture_default_str();
    AddKeyOptions(*check, journal_);
    check->footer(kCheckFormat);
    const auto add = [this](const char* name, const char* about, std::function<ExitStatus()> run) {
        return Add(
            name, about,
            [this, run = std::move(run)] {
                journal_.as_json = as_json_;
                return run();
            },
            false);
    };
    AddJournalCommands(
        add, address_, journal_, [this] { RequireRegister(); }, streams_);
}

ExitStatus CommandLine::RunWithJournal(const CheckFile& file) {
    NameJournal(journal_);
    journal_.as_json = as_json_;
    return RunKeyedCheck(address_, file, journal_, streams_);
}

// What connects must not have that printed which a cashier has not finished.
CLI::App* CommandLine::AddLooking(const std::string& name, const std::string& about,
                                  std::function<ExitStatus()> run) {
    return Add(name, about, [this, run = std::move(run)] {
        if (const auto open = OpenCheckAt(address_)) {
            return ReportOpenCheck(*open, as_json_, streams_);
        }
        return run();
    });
}

void CommandLine::AddQueries() {
    Add("status", "Show state, firmware, serial number, shift and counters",
        [this] { return RunStatus(address_, as_json_, streams_); });
    AddLooking("counters", "Show the counters, the grand total and the cash",
               [this] { return RunCounters(address_, as_json_, streams_); });
    AddLooking("taxes", "Show the settings of the taxes",
               [this] { return RunTaxes(address_, as_json_, streams_); });
    CLI::App* const tape = AddLooking("tape", "Show the records of the control tape", [this] {
        if (range_.to && *range_.to < range_.from) {
            throw CLI::ValidationError("--to", "is before --from");
        }
        const TapeFormat format = csv_       ? TapeFormat::csv
                                  : as_json_ ? TapeFormat::json
                                             : TapeFormat::table;
        return RunTape(address_, range_, format, streams_);
    });
    tape->add_option("--from", range_.from, "First record")
        ->type_name("N")
        ->check(CLI::Range(1, 65535))
        ->capture_default_str();
    tape->add_option("--to", range_.to, "Last record; the last one of all unless given")
        ->type_name("M")
        ->check(CLI::Range(1, 65535));
    tape->add_flag("--csv", csv_, "Write comma-separated values");
    CLI::App* const watch =
        Add("watch", "Show state and counters whenever they change, until Ctrl-C", [this] {
            watch_.as_json = as_json_;
            return RunWatch(address_, watch_, streams_);
        });
    watch->add_option("--interval", watch_.interval_ms, "Milliseconds between two looks")
        ->type_name("MS")
        ->check(CLI::Range(50, 3'600'000))
        ->capture_default_str();
    watch->add_option("--looks", watch_.looks, "How often; 0: without end")
        ->type_name("N")
        ->check(CLI::Range(0, 1'000'000))
        ->capture_default_str();
}

void CommandLine::AddDump() {
    CLI::App* const dump =
        Add("dump", "Write what can be read of a register as a memory of tarvo-register",
            [this] { return RunDump(address_, dump_, as_json_, streams_); });
    dump->add_option("FILE", dump_.file, "The memory file, or - for standard output")
        ->type_name("")
        ->required();
    dump->add_option("--products", dump_.last_product, "Read goods with codes up to N; 0 for none")
        ->type_name("N")
        ->check(CLI::Range(0, 65535))
        ->capture_default_str();
    dump->add_flag("--replace", dump_.replace, "Replace a file that is there");
}

void CommandLine::AddServices() {
    AddLooking("text", "Print a line of text",
               [this] { return RunText(address_, text_, as_json_, streams_); })
        ->add_option("TEXT", text_, "Up to 16 letters")
        ->type_name("")
        ->required();
    AddLooking("feed", "Feed the paper",
               [this] { return RunFeed(address_, times_, as_json_, streams_); })
        ->add_option("N", times_, "How often, 40 lines each time")
        ->check(CLI::Range(1, 100))
        ->capture_default_str();
    AddLooking("lock", "Lock the keyboard",
               [this] { return RunLock(address_, as_json_, streams_); });
    AddLooking("unlock", "Unlock the keyboard",
               [this] { return RunUnlock(address_, as_json_, streams_); });
    AddLooking("display", "Clear the customer display",
               [this] { return RunDisplayClear(address_, as_json_, streams_); })
        ->add_flag("--clear", clear_, "Clear it")
        ->required();
    Add("cancel", "Cancel what is open at the register and reset its state",
        [this] { return RunCancel(address_, as_json_, streams_); });
}

void CommandLine::AddTools() {
    Add("doctor", "Find out what keeps the till from printing, and what to do",
        [this] { return RunDoctor(address_, directory_, as_json_, streams_); })
        ->add_option("--directory", directory_, "Working directory of the host program")
        ->type_name("DIR");
    Add(
        "explain", "Say what a code means, or retell a trace file",
        [this] { return RunExplain(what_, as_json_, streams_); }, false)
        ->add_option("WHAT", what_, "Code or name of an error, a state or a key; or a trace file")
        ->type_name("")
        ->required();
    CLI::App* const run = Add(
        "run", "Run a host program that finds the device at its own port",
        [this] {
            if (address_.device.empty()) {
                throw CLI::RequiredError("--device");
            }
            host_.device = address_.device;
            return static_cast<ExitStatus>(RunHost(host_, streams_));
        },
        false);
    run->fallthrough(false);
    run->add_option("--device", address_.device, "What stands in for the port")->type_name("PATH");
    run->add_option("--port", host_.port, "The host's port: 1 for /dev/ttyS0")
        ->type_name("N")
        ->check(CLI::Range(1, 255))
        ->capture_default_str();
    run->add_option("--directory", host_.directory, "Directory to start in, for the trace files")
        ->type_name("DIR");
    run->add_option("HOST", host_.host, "The program and its arguments, behind --")
        ->type_name("")
        ->required();
    run->footer(kRunAbout);
}

void CommandLine::RequireRegister() const {
    if (address_.device.empty() && address_.port == 0) {
        throw CLI::RequiredError("--device or --port");
    }
}

ExitStatus CommandLine::Run(int argc, const char* const* argv) {
    app_.parse(argc, argv);
    if (needs_register_) {
        RequireRegister();
    }
    return run_();
}

// Also of a command line that is wrong; what stands behind -- is another program's.
bool AsksForJson(int argc, const char* const* argv) {
    const char* const* const end = std::find(argv, argv + argc, std::string_view("--"));
    return std::find(argv, end, std::string_view("--json")) != end;
}

}  // namespace

ExitStatus Run(int argc, const char* const* argv, Streams& streams) {
    const bool as_json = AsksForJson(argc, argv);
    try {
        CommandLine line(streams);
        if (argc > 1 && argv[1] == std::string_view("--complete")) {
            for (const std::string& word : Complete(line.app(), {argv + 2, argv + argc})) {
                streams.out << word << '\n';
            }
            return EndOutput(ExitStatus::done, false, streams);
        }
        try {
            const ExitStatus status = line.Run(argc, argv);
            const bool printed = line.PrintsACheck() && status == ExitStatus::done;
            return EndOutput(status, printed, streams);
        } catch (const CLI::ParseError& e) {
            if (e.get_exit_code() == 0) {  // help or the version was asked for
                line.app().exit(e, streams.out, streams.err);
                return EndOutput(ExitStatus::done, false, streams);
            }
            const auto words = line.app().remaining();
            const bool misspelt = line.app().get_subcommands().empty() && !words.empty();
            return Report(ExitStatus::usage,
                          (misspelt ? "there is no command " + words.front() : e.what()) +
                              std::string(" (kkm --help tells more)"),
                          as_json, streams);
        }
    } catch (const CheckFileError& e) {
        return Report(ExitStatus::bad_file, e.what(), as_json, streams);
    } catch (const std::exception& e) {
        return Report(ExitStatus::failed, e.what(), as_json, streams);
    }
}

}  // namespace kkm
