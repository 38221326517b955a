#pragma once

#include <chrono>
#include <cstdint>
#include <fstream>
#include <optional>
#include <ostream>
#include <string>
#include <utility>

#include "auto_cashier.h"
#include "frame.h"
#include "model.h"
#include "options.h"
#include "paced_bytes.h"
#include "pty_line.h"

namespace virtual_register {

// A running register: the model on its line, with cashier, paper, log and memory file. Waits in
// one place and for as long as nothing happens.
class Service {
  public:
    // Throws std::runtime_error with a sentence for the user when a file or the tty cannot be had.
    explicit Service(const Options& options);
    ~Service();
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;

    const std::string& tty_name() const { return line_.tty_name(); }
    // Serves until `stop` is set (by a signal handler), the prompt says quit, or --once is
    // fulfilled.
    void run(const volatile int& stop);

  private:
    using Counters = std::pair<std::uint16_t, std::uint16_t>;  // tape number, checks

    Counters counters() const;
    std::int64_t now_us() const;
    bool wait();
    void take_input();
    void take_arrived();
    void serve(const Request& request);
    void send_output();
    void obey_prompt();
    void keep_memory();
    void show_paper();
    void log(const std::string& text);
    void make_link();
    bool fulfilled() const;
    // Until something is to be done of itself; -1 when there is nothing.
    std::int64_t patience_us() const;

    Options options_;
    std::chrono::steady_clock::time_point start_;
    Model model_;
    PtyLine line_;
    FrameParser parser_;
    PacedBytes incoming_;
    PacedBytes outgoing_;
    AutoCashier cashier_;
    std::optional<std::int64_t> cashier_due_us_;
    std::int64_t last_arrival_us_ = 0;
    bool noise_told_ = false;
    bool host_was_present_ = false;
    bool prompt_open_ = false;
    bool quit_ = false;
    std::string typed_;
    std::uint64_t kept_version_ = 0;
    Counters kept_counters_;
    std::ofstream paper_file_;
    std::ofstream log_file_;
    std::ostream* log_ = nullptr;
};

}  // namespace virtual_register
