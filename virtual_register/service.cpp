#include "service.h"

#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <iostream>
#include <stdexcept>

#include "exchange_log.h"
#include "memory_file.h"
#include "prompt.h"
#include "recording.h"
#include "text_file.h"

namespace virtual_register {
namespace {

Memory first_memory(const Options& options) {
    if (options.memory_file.empty() || !memory_file_exists(options.memory_file)) {
        return Memory(options.identity);
    }
    Memory memory = load_memory(options.memory_file);
    if (options.firmware_given && memory.firmware().number != options.identity.firmware) {
        throw std::runtime_error(options.memory_file + " is the memory of firmware " +
                                 std::to_string(memory.firmware().number) + ", not " +
                                 std::to_string(options.identity.firmware));
    }
    if (options.serial_given) {
        memory.set_serial(options.identity.serial);
    }
    return memory;
}

Settings settings(const Options& options) {
    Settings settings;
    settings.net_number = options.net_number;
    settings.print_us_per_line = options.print_ms * 1000;
    // The register's clock shows the local time of the machine.
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    ::localtime_r(&now, &local);
    settings.clock_start_s = static_cast<std::int64_t>(now) + local.tm_gmtoff;
    return settings;
}

Scenario read_scenario(const std::string& path) {
    if (path.empty()) {
        return {};
    }
    try {
        return Scenario(read_text(path));
    } catch (const ScenarioError& error) {
        throw std::runtime_error(path + ", " + error.what());
    }
}

}  // namespace

Service::Service(const Options& options)
    : options_(options),
      memory_lock_(options.memory_file),
      model_(first_memory(options), settings(options)),
      wire_(options.baud, options.pace),
      link_(options.link, wire_.tty_name()),
      scenario_(read_scenario(options.scenario_file)),
      prompt_open_(options.cashier == Cashier::prompt),
      paper_file_(options.paper_file, OutputFile::Mode::append),
      receipts_(options.receipt_folder),
      log_(options.log_file, OutputFile::Mode::append),
      recording_(options.record_file, OutputFile::Mode::replace) {
    if (!options_.memory_file.empty()) {
        save_memory(model_.memory(), options_.memory_file, Durability::disk);
        kept_version_ = model_.memory_version();
        kept_counters_ = counters();
    }
    recording_.write(recording_head(options_.baud, model_.memory()));
}

void Service::run(const volatile int& stop) {
    if (prompt_open_) {
        std::cout << "help tells what can be said\n" << std::flush;
    }
    std::vector<std::string> news;
    while (stop == 0 && !quit_ && !fulfilled()) {
        news.clear();
        const auto until = sooner(cashier_due_us_, sooner(wire_.next_us(), scenario_.next_us()));
        if (wire_.wait(until, prompt_open_, news)) {
            obey_prompt();
        }
        for (const std::string& one : news) {
            log_.write("-- " + one + '\n');
        }
        while (const auto request = wire_.next_request()) {
            serve(*request);
        }
        note_scenario(scenario_.act(model_, wire_.now_us()));
        quit_ = quit_ || scenario_.quits();
        if (options_.cashier == Cashier::automatic) {
            cashier_due_us_ = cashier_.act(model_, wire_.now_us());
        }
        keep_memory();
        wire_.flush();
        show_paper();
    }
    tell_unmet();
}

bool Service::fulfilled() const {
    return options_.once != 0 && model_.checks_registered() >= options_.once &&
           !wire_.host_present();
}

void Service::serve(const Request& request) {
    const std::int64_t now = wire_.now_us();
    const std::string at = time_of_day(model_.settings().clock_start_s, now);
    if (log_.is_open()) {
        log_.write(at + " -> " + describe(request) + '\n');
    }
    const Scenario::Exchange exchange = scenario_.handle(model_, request, now);
    note_scenario(exchange.remarks);
    if (log_.is_open()) {
        log_.write(at + " <- " +
                   (exchange.answer ? describe(*exchange.answer, request) : "(silence)") + '\n');
    }
    record(request, exchange, now);
    if (exchange.bytes) {
        wire_.send(*exchange.bytes, now + exchange.delay_us);
    }
}

void Service::record(const Request& request, const Scenario::Exchange& exchange,
                     std::int64_t now_us) {
    if (!recording_.is_open()) {
        return;
    }
    recording_.write(recorded_request(now_us, request));
    if (exchange.bytes) {
        recording_.write(recorded_answer(now_us + exchange.delay_us, *exchange.bytes,
                                         describe(*exchange.answer, request)));
    }
}

void Service::note_scenario(const std::vector<std::string>& remarks) {
    for (const std::string& remark : remarks) {
        log_.write("-- scenario, " + remark + '\n');
    }
}

void Service::tell_unmet() const {
    for (const std::string& line : scenario_.unmet()) {
        std::cerr << "tarvo-register: never came about: " << options_.scenario_file << ", " << line
                  << '\n';
    }
}

void Service::obey_prompt() {
    char bytes[512];
    const ssize_t count = ::read(STDIN_FILENO, bytes, sizeof bytes);
    if (count < 0 && (errno == EINTR || errno == EAGAIN)) {
        return;
    }
    if (count <= 0) {
        prompt_open_ = false;  // nobody is there to type; the register goes on
        return;
    }
    typed_.append(bytes, static_cast<std::size_t>(count));
    std::size_t end = typed_.find('\n');
    for (; end != std::string::npos && !quit_; end = typed_.find('\n')) {
        model_.advance(wire_.now_us());
        const PromptAnswer answer = obey(model_, typed_.substr(0, end));
        typed_.erase(0, end + 1);
        quit_ = answer.quit;
        if (!answer.text.empty()) {
            std::cout << answer.text << '\n' << std::flush;
        }
    }
}

void Service::keep_memory() {
    if (options_.memory_file.empty() || kept_version_ == model_.memory_version()) {
        return;
    }
    // What was registered must outlive the machine before the host hears of it; a host would not
    // wait for the disk at every line of a check.
    const bool registered = kept_counters_ != counters();
    save_memory(model_.memory(), options_.memory_file,
                registered ? Durability::disk : Durability::program);
    kept_version_ = model_.memory_version();
    kept_counters_ = counters();
}

Service::Counters Service::counters() const {
    return {model_.memory().tape_number, model_.memory().checks};
}

void Service::show_paper() {
    if (model_.paper().lines().empty()) {
        return;
    }
    model_.forget_printed();
    for (const PaperLine& line : model_.paper().tear_off()) {
        const std::string text = render(line) + '\n';
        if (!options_.quiet) {
            std::cout << text;
        }
        paper_file_.write(text);
        receipts_.add(line);
    }
    std::cout.flush();
}

}  // namespace virtual_register
