// The register's program as a child process, and the cashier at its prompt.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace test {

class RegisterProcess {
  public:
    enum class Prompt { cashier, none };

    // Starts it, with a cashier at the prompt unless told otherwise, and waits until its tty is
    // there. The child dies with the test.
    explicit RegisterProcess(const std::vector<std::string>& options,
                             Prompt prompt = Prompt::cashier);
    // Stops it if it runs.
    ~RegisterProcess();
    RegisterProcess(const RegisterProcess&) = delete;
    RegisterProcess& operator=(const RegisterProcess&) = delete;

    const std::string& Tty() const { return tty_; }

    bool Prompted() const { return prompt_ == Prompt::cashier; }
    // What the cashier types. When it returns the register has obeyed, and its files tell so.
    void Say(const std::string& line);
    // The register's own report of what it holds, as text.
    std::string Status();
    // True when the report contains the text.
    bool Says(const std::string& text) { return Status().find(text) != std::string::npos; }

    // Waits for its own end; as Stop() else.
    int Wait() { return End(0); }
    // Ends it in order; its exit status, or minus the signal that ended it.
    int Stop();
    // Ends it at once, as if the line were pulled out.
    void Kill();

  private:
    std::string ReadLine();
    // Signal 0 only waits.
    int End(int signal);

    Prompt prompt_;
    pid_t pid_ = -1;
    int to_ = -1;
    int from_ = -1;
    std::string buffer_;
    std::string tty_;
};

}  // namespace test
