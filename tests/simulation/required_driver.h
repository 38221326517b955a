// The driver as it is required to be: a second one, written apart from the first. It is led through
// what the real driver met and says what had to be done and what had to come out.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "simulation/conversation.h"
#include "simulation/host_plan.h"

namespace simulation {

// A line of the check buffer.
struct RequiredLine {
    std::string name;
    std::string barcode;
    std::uint32_t kopecks = 0;
    float quantity = 0;
    bool fractional = false;
    std::uint8_t section = 0;
};

struct RequiredCheck {
    std::vector<RequiredLine> lines;
    int mode = 0;  // 0 sale, 1 return, 2 credit
    int discount = 0;
    std::uint32_t cash = 0;

    double Total() const;  // kopecks
};

// The count that travels for a line: pieces, or thousandths.
std::int64_t RequiredCount(const RequiredLine& line);

// Hundredths of what the host gave, rounded half up.
std::int64_t RequiredKopecks(double units);

// What a call gives its host.
struct Outcome {
    int error = 0;
    bool throws = false;          // an exception leaves the function
    std::optional<double> value;  // where the call has one
    // From the beginning of the call, or of PrintCheck's last pass, to its end.
    std::uint32_t exchanges = 0;
    Micros took_us = 0;
    unsigned longest_body = 0;
    int tape_records = 0;  // as the register's last statistics answer told
    std::string told;      // what the host's callbacks must have heard
};

class RequiredDriver {
  public:
    // One call, whose events begin at the given place. Throws Deviation.
    Outcome Follow(const Call& call, Journal& journal, std::size_t first_event,
                   std::uint32_t first_exchange);

    // The network number that the driver asks for.
    void SetNumber(std::uint8_t number) { number_ = number; }
    void SetCallbacks(Callbacks callbacks) { callbacks_ = callbacks; }
    const RequiredCheck& check() const { return check_; }
    // The check as it was when the last PrintCheck took it up; it may be emptied afterwards.
    const RequiredCheck& printed() const { return printed_; }
    int version() const { return version_; }

  private:
    struct Status {
        std::uint8_t state = 0xA0;
        std::uint16_t code = 0;
        std::uint8_t reply = 0;
        bool marked = false;
    };
    struct Statistics {
        int tape = 0;
        int checks = 0;
        int records = 0;
    };
    struct TapeRecord {
        bool exists = false;
        double sum = 0;
        int kind = 0;
        int selector = 0;
    };

    // required_calls.cpp, required_buffer.cpp
    Outcome Do(const Call& call);
    double DoQuery(const Call& call);
    void Connect(const std::string& path);
    bool FindAt(int baud);
    void Disconnect();
    void Identify();
    void AddSale(const Call& call);
    void DeleteSale(int index);
    void SetDiscount(int value);
    double GetSale(int index) const;
    double GrandTotal();
    double CashSum(int selector);
    double ReadTape(int number);
    double Serial();
    void PrintString(std::string text);

    // required_protocol.cpp
    Reply Ask(std::uint8_t command, const Payload& payload, std::uint8_t answer,
              unsigned pause_ms = 0);
    int AskVersion();
    Reply ReadRam(int location, std::uint8_t count);
    unsigned ReadRamByte(int location);
    Reply ReadEeprom(std::uint32_t address, std::uint8_t count);
    unsigned ReadEepromByte(std::uint32_t address);
    unsigned SaleNumber();
    unsigned RegisterError();
    Statistics ReadStatistics();
    Status Decode(const Reply& reply);
    Status ReadStatus();
    bool WaitFor(std::uint8_t state);
    void Reset();
    void Key(std::uint8_t key);
    void SimpleLock();
    void LockSwitch(bool unlock);
    void LockKeyboard();
    void UnlockKeyboard();
    void ClearCheck();
    void ClearCheckByKeys();
    void PressKeysUntilCleared();
    void QuerySale();
    void ShowText(std::uint8_t value);
    TapeRecord AskTape(int index);
    int SerialPlace() const;
    void KnowVersion() const;

    // required_check.cpp
    void StartWait();
    void DropPendingSale();
    void Print();
    void Pass();
    void Dispatch(Status status);
    void PrintQueried(const Status& status);
    void CancelOpenCheck(unsigned pause_ms);
    void CancelCheckOut();
    void CleanUpKnown(int code);
    void CleanUpUnknown();

    // required_steps.cpp
    unsigned TrySaleNumber();
    void TrySale(const RequiredLine& line);
    void SendSale(const RequiredLine& line);
    void TryTitle(unsigned sale, const std::string& title);
    void TryDiscount();
    void TryType();
    void TryCash();
    void TryCheckOut();
    void TestPrint(const Statistics& before);
    void TryUnlock();
    // Runs the attempt until it does not fail, at most 20 times; the 20th success is a failure.
    template <typename Attempt, typename AfterFailure>
    void UpToTwentyTimes(Attempt attempt, AfterFailure after_failure);

    void BeginBoundedPart();
    void LeaveOutExchanges(std::uint32_t since_exchange, Micros since);
    void TellStep(int step);
    void SetError(int code);

    Conversation* talk_ = nullptr;
    Callbacks callbacks_ = Callbacks::none;
    std::string told_;
    std::uint8_t number_ = 0;
    bool port_open_ = false;
    int version_ = 0;
    std::uint8_t section_ = 0;
    bool host_wait_set_ = false;
    bool clears_buffer_ = true;
    bool stop_ = false;
    std::uint32_t counted_from_ = 0;  // exchange at which the bounded part of a call began
    Micros timed_from_ = 0;
    int tape_records_ = 0;
    int error_ = 0;
    RequiredCheck check_;
    RequiredCheck printed_;
};

}  // namespace simulation
