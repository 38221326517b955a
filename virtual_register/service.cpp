#include "service.h"

#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iostream>
#include <stdexcept>
#include <utility>
#include <vector>

#include "exchange_log.h"
#include "memory_file.h"
#include "prompt.h"

namespace virtual_register {
namespace {

constexpr std::int64_t kFrameSilenceUs = 100000;  // a frame with such a gap is no frame
constexpr int kBitsPerByte = 10;
constexpr std::int64_t kLongestPatienceUs = 60000000;

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

std::int64_t byte_us(const Options& options) {
    return options.pace ? std::int64_t{1000000} * kBitsPerByte / options.baud : 0;
}

void open_to_append(std::ofstream& file, const std::string& path) {
    file.open(path, std::ios::app);
    if (!file) {
        throw std::runtime_error("cannot write " + path + ": " + std::strerror(errno));
    }
}

}  // namespace

Service::Service(const Options& options)
    : options_(options),
      start_(std::chrono::steady_clock::now()),
      model_(first_memory(options), settings(options)),
      incoming_(byte_us(options)),
      outgoing_(byte_us(options)),
      prompt_open_(options.cashier == Cashier::prompt) {
    if (!options_.paper_file.empty()) {
        open_to_append(paper_file_, options_.paper_file);
    }
    if (options_.log_file == "-") {
        log_ = &std::cerr;
    } else if (!options_.log_file.empty()) {
        open_to_append(log_file_, options_.log_file);
        log_ = &log_file_;
    }
    if (!options_.memory_file.empty()) {
        save_memory(model_.memory(), options_.memory_file, Durability::disk);
        kept_version_ = model_.memory_version();
        kept_counters_ = counters();
    }
    if (!options_.link.empty()) {
        make_link();
    }
}

Service::~Service() {
    if (!options_.link.empty()) {
        ::unlink(options_.link.c_str());
    }
}

void Service::make_link() {
    struct stat about {};
    const bool exists = ::lstat(options_.link.c_str(), &about) == 0;
    // What an earlier run left behind may go; anything else is somebody's.
    const bool in_the_way = exists && (!S_ISLNK(about.st_mode) || ::unlink(options_.link.c_str()));
    if (in_the_way) {
        errno = EEXIST;
    }
    if (in_the_way || ::symlink(tty_name().c_str(), options_.link.c_str()) != 0) {
        const std::string why = std::strerror(errno);
        const std::string path = std::exchange(options_.link, {});
        throw std::runtime_error("cannot make the link " + path + ": " + why);
    }
}

std::int64_t Service::now_us() const {
    return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() -
                                                                 start_)
        .count();
}

void Service::run(const volatile int& stop) {
    if (prompt_open_) {
        std::cout << "help tells what can be said\n" << std::flush;
    }
    while (stop == 0 && !quit_ && !fulfilled()) {
        if (wait()) {
            take_input();
        }
        take_arrived();
        if (options_.cashier == Cashier::automatic) {
            cashier_due_us_ = cashier_.act(model_, now_us());
        }
        keep_memory();
        send_output();
        show_paper();
    }
}

bool Service::fulfilled() const {
    return options_.once != 0 && model_.checks_registered() >= options_.once &&
           !line_.host_present();
}

std::int64_t Service::patience_us() const {
    std::optional<std::int64_t> until = cashier_due_us_;
    const auto sooner = [&until](std::optional<std::int64_t> moment) {
        if (moment && (!until || *moment < *until)) {
            until = moment;
        }
    };
    sooner(incoming_.next_us());
    sooner(outgoing_.next_us());
    if (!until) {
        return -1;
    }
    const std::int64_t left = *until - now_us();
    return std::clamp<std::int64_t>(left, 0, kLongestPatienceUs);
}

// True when the line has something: input, or the news that the host is gone.
bool Service::wait() {
    pollfd waited[2] = {{line_.descriptor(), POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}};
    // To the microsecond: a byte of a fast line takes less than two tenths of a millisecond.
    const std::int64_t patience = patience_us();
    const timespec limit{static_cast<std::time_t>(patience / 1000000),
                         static_cast<long>(patience % 1000000 * 1000)};
    // Signals come through only here, or one that came just before would wait for the next byte.
    sigset_t none;
    sigemptyset(&none);
    const int count = ::ppoll(waited, prompt_open_ ? 2 : 1, patience < 0 ? nullptr : &limit, &none);
    if (count <= 0) {
        return false;
    }
    if (prompt_open_ && waited[1].revents != 0) {
        obey_prompt();
    }
    return waited[0].revents != 0;
}

void Service::take_input() {
    const std::vector<std::uint8_t> bytes = line_.receive();
    if (host_was_present_ != line_.host_present()) {
        host_was_present_ = line_.host_present();
        noise_told_ = false;
        log(host_was_present_ ? "-- the host is there" : "-- the host closed the tty");
    }
    if (bytes.empty()) {
        if (line_.host_present()) {
            // The tty cannot be had back just now; asking again at once would only burn time.
            const timespec pause{0, 100000000};
            ::nanosleep(&pause, nullptr);
        }
        return;
    }
    if (line_.host_speed() != options_.baud) {
        if (!noise_told_) {
            log("-- noise: the host's speed is not " + std::to_string(options_.baud));
            noise_told_ = true;
        }
        return;
    }
    noise_told_ = false;
    for (std::uint8_t byte : bytes) {
        incoming_.send(byte, now_us());
    }
}

void Service::take_arrived() {
    while (const auto byte = incoming_.arrived(now_us())) {
        const std::int64_t now = now_us();
        if (now - last_arrival_us_ > kFrameSilenceUs) {
            parser_.line_was_silent();
        }
        last_arrival_us_ = now;
        parser_.add(*byte);
        while (const auto request = parser_.next()) {
            serve(*request);
        }
    }
}

void Service::serve(const Request& request) {
    const std::int64_t now = now_us();
    const std::string at = log_ == nullptr ? "" : time_of_day(model_.settings().clock_start_s, now);
    if (log_ != nullptr) {
        log(at + " -> " + describe(request));
    }
    const std::optional<Answer> answer = model_.handle(request, now);
    if (log_ != nullptr) {
        log(at + " <- " + (answer ? describe(*answer, request) : "(silence)"));
    }
    if (answer) {
        for (std::uint8_t byte : build_frame(*answer, options_.net_number)) {
            outgoing_.send(byte, now);
        }
    }
}

void Service::send_output() {
    std::vector<std::uint8_t> bytes;
    while (const auto byte = outgoing_.arrived(now_us())) {
        bytes.push_back(*byte);
    }
    if (!bytes.empty()) {
        line_.send(bytes);
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
        model_.advance(now_us());
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
        if (paper_file_.is_open()) {
            paper_file_ << text;
        }
    }
    std::cout.flush();
    paper_file_.flush();
}

void Service::log(const std::string& text) {
    if (log_ != nullptr) {
        *log_ << text << '\n' << std::flush;
    }
}

}  // namespace virtual_register
