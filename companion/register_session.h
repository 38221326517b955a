// The companion's side of the register: prints a check through the driver's exported functions and
// reads what tells whether it came out.
#pragma once

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>

#include "companion/check.h"
#include "companion/decision.h"
#include "companion/register_reading.h"

namespace kkmcheck {

// The journal did not take a row. Nothing may be sent on the strength of it.
class JournalFailure : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Where an attempt's steps are written down; each is on the disk when it returns. All throw
// JournalFailure.
class AttemptLog {
  public:
    virtual ~AttemptLog() = default;
    virtual void Counted(const Mark& mark, int firmware) = 0;
    virtual void Sending(const Mark& mark) = 0;
    virtual void Returned(int result, int error) = 0;
};

// Whoever runs a session: how long it may go on, and its way out.
struct Conditions {
    std::function<bool()> time_is_left;
    // A long tape is being read, so many of so many records so far; false: no further.
    std::function<bool(int read, int all)> tape_goes_on;
    // Unknown so far, and why: what is left to say when the rest of the time brings nothing.
    std::function<void(const Verdict&, int driver_error)> found_so_far;
    // The register asked for the check: from here on lines may be sent.
    std::function<void()> sending_begins;
    // Ends everything at once. The driver does not hear of failures in its callbacks, and must not
    // go on to send what is not in the journal.
    std::function<void()> abandon;
};

class RegisterSession {
  public:
    RegisterSession(std::string device, Conditions conditions);
    ~RegisterSession();
    RegisterSession(const RegisterSession&) = delete;
    RegisterSession& operator=(const RegisterSession&) = delete;

    // Prints the check and finds out what came of it. `evidence` has the check's records and the
    // claims of others; it is completed. Throws JournalFailure while nothing is sent; later ones
    // are kept for journal_failure().
    Verdict Print(const Check& check, Evidence& evidence, AttemptLog& log);
    // Finds out what came of an attempt that broke off. Cancels what is open at the register when
    // its counters alone do not tell.
    Verdict Resolve(Evidence& evidence);
    // Says good-bye to the register, unless a check may be open there that a good-bye would bring
    // out. Blocks without bound, like the driver's.
    void Leave();

    // Last error of the driver that mattered, 0 for none.
    int driver_error() const { return driver_error_; }
    const std::string& journal_failure() const { return journal_failure_; }

  private:
    static void OnQuery();
    void Asked();

    bool Connect();
    bool FillBuffer(const Check& check);
    bool MakeReady();
    bool ClearRegister();
    Verdict Settle(Evidence& evidence);
    bool Look(Evidence& evidence);
    bool Worked(int result);

    std::string device_;
    Conditions conditions_;
    bool connected_ = false;
    bool may_leave_ = false;
    int driver_error_ = 0;
    std::string journal_failure_;
    std::optional<TapeReading> reading_;  // that broke off
    Evidence* printing_ = nullptr;
    AttemptLog* log_ = nullptr;
};

}  // namespace kkmcheck
