// What the C interface does: keys, attempts and whose turn it is at the register.
#pragma once

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "companion/deadline.h"
#include "companion/journal.h"
#include "companion/till_lock.h"
#include "companion/worker_process.h"

namespace kkmcheck {

// Why a call did nothing.
class Refusal : public std::runtime_error {
  public:
    enum class Why { other_content, no_key, argument, busy, worker };
    Refusal(Why why, const std::string& what) : std::runtime_error(what), why_(why) {}
    Why why() const { return why_; }

  private:
    Why why_;
};

// Members throw JournalFailure, Refusal or BadCheck, and have printed nothing then.
class Till {
  public:
    Till(const std::string& journal, std::string device);

    Attempt Print(const std::string& key, const Check& check, bool again, const Deadline& deadline);
    Attempt Resolve(const std::string& key, const Deadline& deadline);
    Attempt Recorded(const std::string& key);
    Attempt SetByHand(const std::string& key, Outcome outcome);
    // The last attempt of each key, in the order of the keys' first ones.
    std::vector<Attempt> All();
    std::vector<std::string> UndecidedKeys();
    // Told in the thread of the call that waits for a worker.
    void OnStep(std::function<void(const WorkerStep&)> on_step) { on_step_ = std::move(on_step); }

  private:
    Attempt Find(const std::string& key);
    Attempt Settle(const Attempt& attempt, const TillLock& lock, const Deadline& deadline);
    Attempt Work(const Attempt& attempt, bool prints, const TillLock& lock,
                 const Deadline& deadline);
    Attempt Answer(const Attempt& begun, const WorkerResult& result);
    Attempt Row(std::int64_t id);
    Attempt WithoutRegister(const Attempt& attempt);
    void RequireDevice() const;

    std::string path_;
    std::string device_;
    Journal journal_;
    std::function<void(const WorkerStep&)> on_step_ = [](const WorkerStep&) {};
};

}  // namespace kkmcheck
