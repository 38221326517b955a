#include "companion/register_session.h"

#include <limits>
#include <utility>

#include "VeskTarvoM5/VeskTarvoM5.h"

namespace kkmcheck {
namespace {

constexpr int kLastWithoutLock = 302;
constexpr unsigned kPauseMs = 200;
constexpr int kClearings = 4;
// What was cleared once is cleared again, to see that it is gone.
constexpr int kClearingsInARow = 2;

// The driver calls plain functions.
RegisterSession* session = nullptr;

// The driver's texts are not constant by type.
char* Text(std::string& text) {
    return text.data();
}

int Firmware() {
    int version = 0;
    return GetKKMVers(&version) != 0 ? version : 0;
}

void FreeKeyboard() {
    if (Firmware() > kLastWithoutLock) {
        UnLock();
    }
}

// What another look may still change.
bool MayChange(Reason reason) {
    return reason == Reason::register_unread || reason == Reason::tape_unread ||
           reason == Reason::check_may_be_open;
}

}  // namespace

RegisterSession::RegisterSession(std::string device, Conditions conditions)
    : device_(std::move(device)), conditions_(std::move(conditions)) {
    session = this;
}

RegisterSession::~RegisterSession() {
    EventQuery = nullptr;
    session = nullptr;
}

bool RegisterSession::Worked(int result) {
    if (result == 0) {
        driver_error_ = GetErrorCode();
    }
    return result != 0;
}

bool RegisterSession::Connect() {
    connected_ = Worked(ConnectKKMDevice(Text(device_)));
    return connected_;
}

bool RegisterSession::FillBuffer(const Check& check) {
    cbClearSales();
    for (const Line& line : check.lines) {
        std::string name = line.name;
        if (!Worked(cbAddSale(Text(name), line.price, line.quantity, line.section))) {
            return false;
        }
    }
    cbSetReturnMode(check.mode == Mode::refund ? 1 : 0);
    cbSetCreditMode(check.mode == Mode::credit ? 1 : 0);
    if (!Worked(cbSetDiscountValue(check.discount))) {
        return false;
    }
    try {
        cbSetCash(check.cash);
    } catch (...) {
        driver_error_ = echDevice;
        return false;
    }
    return true;
}

bool RegisterSession::MakeReady() {
    bool ready = Worked(CheckClose());
    if (!ready && driver_error_ == echRegKass) {
        // A lock that somebody's broken session left: its reset ends nothing but the lock, for the
        // check behind it has been taken out of its closing.
        CheckCancel();
        ready = Worked(CheckClose());
    }
    if (ready) {
        may_leave_ = true;
        driver_error_ = 0;
    }
    return ready;
}

void RegisterSession::OnQuery() {
    if (session != nullptr) {
        session->Asked();
    }
}

// In the middle of PrintCheck(), before the first line is sent. The counters are read once more,
// since a cashier may have sold something while the register was waited for, and a check that broke
// off before may have come out until CheckClose() took it away. The mark that goes into the journal
// bounds the earlier attempts: without one of this moment nothing is sent.
void RegisterSession::Asked() {
    conditions_.sending_begins();
    const auto mark = ReadMark();
    if (!mark) {
        FreeKeyboard();  // the driver has locked it for a check that does not come
        conditions_.abandon();
        return;
    }
    printing_->before = mark;
    // The driver takes what these queries left behind for an error of its own.
    cbGetClearBufMode();
    try {
        log_->Sending(*printing_->before);
        printing_->stage = Stage::sending;
        may_leave_ = false;
    } catch (const JournalFailure& failure) {
        journal_failure_ = failure.what();
        FreeKeyboard();  // the driver has locked it for a check that does not come
        conditions_.abandon();
    }
}

Verdict RegisterSession::Print(const Check& check, Evidence& evidence, AttemptLog& log) {
    const Verdict nothing_sent{Outcome::not_printed, Reason::nothing_sent};
    if (!Connect()) {
        return nothing_sent;
    }
    evidence.before = ReadMark();
    if (!evidence.before) {
        driver_error_ = echDevice;
        return nothing_sent;
    }
    log.Counted(*evidence.before, Firmware());
    evidence.stage = Stage::counted;
    if (!FillBuffer(check) || !MakeReady()) {
        return nothing_sent;
    }
    FreeKeyboard();
    printing_ = &evidence;
    log_ = &log;
    EventQuery = OnQuery;
    const int result = PrintCheck();
    driver_error_ = GetErrorCode();
    EventQuery = nullptr;
    if (evidence.stage != Stage::sending) {
        return nothing_sent;
    }
    evidence.stage = Stage::returned;
    evidence.driver_result = result;
    try {
        log.Returned(result, driver_error_);
    } catch (const JournalFailure& failure) {
        journal_failure_ = failure.what();
    }
    return Settle(evidence);
}

Verdict RegisterSession::Resolve(Evidence& evidence) {
    if (const Verdict verdict = Decide(evidence); verdict.outcome != Outcome::unknown) {
        return verdict;
    }
    evidence.nothing_open = false;
    return Settle(evidence);
}

Verdict RegisterSession::Settle(Evidence& evidence) {
    const int print_error = driver_error_;
    Verdict verdict{Outcome::unknown, Reason::register_unread};
    Reason before = Reason::none;
    do {
        if (!connected_ && !Connect()) {
            Sleep(kPauseMs);
            continue;
        }
        if (!Look(evidence)) {
            continue;
        }
        verdict = Decide(evidence);
        if (verdict.outcome != Outcome::unknown) {
            may_leave_ = true;
            break;
        }
        if (verdict.reason != before) {
            conditions_.found_so_far(verdict, print_error != 0 ? print_error : driver_error_);
        }
        if (verdict.reason == Reason::check_may_be_open) {
            evidence.nothing_open = ClearRegister();
            connected_ = evidence.nothing_open;
        } else if (!MayChange(verdict.reason) && verdict.reason == before) {
            break;
        }
        before = verdict.reason;
    } while (conditions_.time_is_left());
    if (print_error != 0 || verdict.outcome != Outcome::unknown) {
        driver_error_ = print_error;
    }
    return verdict;
}

bool RegisterSession::ClearRegister() {
    int in_a_row = 0;
    for (int i = 0; i < kClearings && in_a_row < kClearingsInARow; ++i) {
        in_a_row = MakeReady() ? in_a_row + 1 : 0;
    }
    if (in_a_row < kClearingsInARow) {
        may_leave_ = false;
        return false;
    }
    FreeKeyboard();
    return true;
}

// False when not even the counters could be read.
bool RegisterSession::Look(Evidence& evidence) {
    const TapeRange range{evidence.before->counters, evidence.until
                                                         ? evidence.until->counters.records
                                                         : std::numeric_limits<int>::max()};
    const bool whole = ReadTape(range, conditions_.tape_goes_on, reading_);
    connected_ = whole;
    if (!reading_) {
        return false;
    }
    evidence.after = reading_->counters;
    evidence.last_record_now = reading_->last_record_before;
    evidence.records = reading_->records;
    if (whole) {
        reading_.reset();
    }
    return true;
}

void RegisterSession::Leave() {
    if (connected_ && may_leave_) {
        DisconnectKKM();
        connected_ = false;
    }
}

}  // namespace kkmcheck
