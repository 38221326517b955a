// A check, from the preparation of the register to the clean-up behind a failure.
#include "simulation/required_driver.h"

namespace simulation {

void RequiredDriver::StartWait() {
    const Status status = ReadStatus();
    if (status.state == 0xC8) {
        CancelCheckOut();
    } else if (TrySaleNumber() > 0) {
        DropPendingSale();
    }
}

void RequiredDriver::DropPendingSale() {
    QuerySale();
    Status status;
    for (int poll = 0; poll < 10 && status.state != 0xA3; ++poll) {
        status = ReadStatus();
    }
    if (status.state == 0xCA) {
        LockKeyboard();
        CancelOpenCheck(20);
        UnlockKeyboard();
    } else if (status.state == 0xA3) {
        Reset();
        ClearCheck();
    } else {
        throw Failed{Failing::engine, 6};
    }
}

void RequiredDriver::CancelOpenCheck(unsigned pause_ms) {
    Reset();
    talk_->Sleep(pause_ms);
    ClearCheck();
    talk_->Sleep(pause_ms);
    Key(32);
    talk_->Sleep(pause_ms);
    Key(40);
    talk_->Sleep(pause_ms);
    Reset();
}

void RequiredDriver::CancelCheckOut() {
    SimpleLock();
    CancelOpenCheck(50);
    QuerySale();
}

void RequiredDriver::Print() {
    stop_ = false;
    do {
        Pass();
    } while (!stop_ && !talk_->EndedByHost());
}

void RequiredDriver::Pass() {
    BeginBoundedPart();
    Status status;
    try {
        status = ReadStatus();
    } catch (const Failed&) {
        return;  // as if the register were idle
    }
    try {
        Dispatch(status);
    } catch (const Failed& failed) {
        talk_->Failure();
        stop_ = true;
        if (failed.how == Failing::engine) {
            CleanUpKnown(failed.code);
        } else {
            CleanUpUnknown();
        }
    }
}

void RequiredDriver::Dispatch(Status status) {
    switch (status.state) {
        case 0xA0:
            return;
        case 0xC8:
            CancelCheckOut();
            return;
        case 0xA2:
        case 0xC6:
            Reset();
            talk_->Sleep(50);
            ClearCheck();
            PrintQueried(status);
            return;
        case 0xA3:
        case 0xA1:
            PrintQueried(status);
            return;
        default:
            Reset();
            return;
    }
}

void RequiredDriver::PrintQueried(const Status& status) {
    if (SaleNumber() != 0) {
        const std::string text = "Check is opened ";
        Payload line(text.begin(), text.end());
        line.push_back(16);
        line.push_back(2);
        Ask(0x7E, line, 0x91);
        talk_->Sleep(20);
        return;
    }
    if (status.marked) {
        throw Failed{Failing::engine, 6};
    }
    if (status.code == 7) {
        throw Failed{Failing::engine, 34};
    }
    const bool locks = version_ > 302 && version_ != 400;
    if (locks) {
        LockKeyboard();
    }
    const Statistics before = ReadStatistics();
    TellStep(0);
    if (check_.lines.empty()) {
        RequiredLine zero;
        zero.section = 1;
        zero.fractional = true;
        check_.lines.push_back(zero);
    }
    printed_ = check_;
    for (const RequiredLine& line : check_.lines) {
        TrySale(line);
    }
    Reset();
    if (check_.discount != 0) {
        TryDiscount();
    } else {
        Ask(0x24, {1, 0, 0}, 0xB5, 50);
        Reset();
    }
    TryType();
    talk_->Sleep(50);
    TryCash();
    TryCheckOut();
    TellStep(100);
    TestPrint(before);
    if (locks) {
        TryUnlock();
    }
    if (clears_buffer_) {
        check_ = RequiredCheck();
    }
    stop_ = true;
}

// A callback that throws keeps those behind it from being called.
void RequiredDriver::TellStep(int step) {
    if (callbacks_ == Callbacks::none) {
        return;
    }
    if (step == 0) {
        told_ += "q";
        if (callbacks_ == Callbacks::throwing) {
            return;
        }
    }
    told_ += std::to_string(step) + ";";
}

void RequiredDriver::SetError(int code) {
    error_ = code;
    if (callbacks_ != Callbacks::none) {
        told_ += "e" + std::to_string(code) + ";";
    }
}

void RequiredDriver::CleanUpKnown(int code) {
    if (version_ > 302) {
        try {
            UnlockKeyboard();
        } catch (const Failed&) {
            // The rest follows all the same.
        }
    }
    if (code != 5) {
        try {
            SimpleLock();
            CancelOpenCheck(50);
        } catch (const Failed&) {
            // The host hears of the first failure only.
        }
    }
    SetError(code);
}

void RequiredDriver::CleanUpUnknown() {
    try {
        if (version_ > 302) {
            UnlockKeyboard();
        }
        SimpleLock();
        CancelOpenCheck(50);
    } catch (const Failed&) {
        // The first failure ends the clean-up.
    }
    SetError(2);
}

}  // namespace simulation
