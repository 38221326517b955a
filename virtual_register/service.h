#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "auto_cashier.h"
#include "frame.h"
#include "memory_lock.h"
#include "model.h"
#include "options.h"
#include "output_file.h"
#include "receipt_folder.h"
#include "scenario.h"
#include "tty_link.h"
#include "wire.h"

namespace virtual_register {

// A running register: the model on its line, with cashier, scenario, paper, log, recording and
// memory file. Waits in one place and for as long as nothing happens.
class Service {
  public:
    // Throws std::runtime_error with a sentence for the user when a file or the tty cannot be had.
    explicit Service(const Options& options);

    const std::string& tty_name() const { return wire_.tty_name(); }
    // Serves until `stop` is set (by a signal handler), the prompt says quit, or --once is
    // fulfilled.
    void run(const volatile int& stop);
    // Paper file, log and recording hold all that they should.
    bool wrote_everything() const {
        return paper_file_.complete() && log_.complete() && recording_.complete();
    }

  private:
    using Counters = std::pair<std::uint16_t, std::uint16_t>;  // tape number, checks

    Counters counters() const;
    void serve(const Request& request);
    void record(const Request& request, const Scenario::Exchange& exchange, std::int64_t now_us);
    void follow_scenario();
    void note_scenario(const std::vector<std::string>& remarks);
    void obey_prompt();
    void keep_memory();
    void show_paper();
    void tell_unmet() const;
    bool fulfilled() const;

    Options options_;
    MemoryLock memory_lock_;  // before the memory is read
    Model model_;
    Wire wire_;
    TtyLink link_;
    Scenario scenario_;
    AutoCashier cashier_;
    std::optional<std::int64_t> cashier_due_us_;
    bool prompt_open_ = false;
    bool quit_ = false;
    std::string typed_;
    std::uint64_t kept_version_ = 0;
    Counters kept_counters_;
    OutputFile paper_file_;
    ReceiptFolder receipts_;
    OutputFile log_;
    OutputFile recording_;
};

}  // namespace virtual_register
