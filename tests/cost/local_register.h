// A register for the driver's cost to be counted against: in this process behind the replaced
// calls, or on a pseudo terminal of its own thread, where the system's calls are real.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "cost/line_calls.h"
#include "virtual_register/model.h"

namespace cost {

class LocalRegister : public Answerer {
  public:
    explicit LocalRegister(int firmware);

    // The cashier asks the host for a check.
    void AskForCheck();
    // Clears what was printed, so that a long run stays the same from beginning to end.
    void ForgetPrinted();
    // A tape of so many sales for cash.
    void FillTape(int records);
    // So many bytes of no meaning are there to be read.
    void LetWait(std::size_t count);

    void Take(const unsigned char* bytes, std::size_t count, std::int64_t now_us) override;
    bool HasByte() override { return read_ < pending_.size(); }
    unsigned char NextByte() override { return pending_[read_++]; }
    void Forget() override;

  protected:
    virtual_register::Model model_;
    virtual_register::FrameParser parser_;
    virtual_register::FrameBytes pending_;
    std::size_t read_ = 0;
    std::mutex busy_;
};

// The same on a pseudo terminal. Answers as soon as it has been asked.
class TtyRegister : public LocalRegister {
  public:
    explicit TtyRegister(int firmware);
    // The host must have closed the tty.
    ~TtyRegister() override;
    TtyRegister(const TtyRegister&) = delete;
    TtyRegister& operator=(const TtyRegister&) = delete;

    const std::string& Tty() const { return tty_; }

  private:
    void Serve();

    int master_ = -1;
    std::string tty_;
    std::thread server_;
};

}  // namespace cost
