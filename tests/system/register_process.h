// The register's program as a child process, and the cashier at its prompt.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace test {

class RegisterProcess {
  public:
    // Starts it with a cashier at the prompt and waits until its tty is there. The child dies with
    // the test.
    explicit RegisterProcess(const std::vector<std::string>& options);
    // Stops it if it runs.
    ~RegisterProcess();
    RegisterProcess(const RegisterProcess&) = delete;
    RegisterProcess& operator=(const RegisterProcess&) = delete;

    const std::string& Tty() const { return tty_; }

    // What the cashier types. When it returns the register has obeyed, and its files tell so.
    void Say(const std::string& line);
    // The register's own report of what it holds, as text.
    std::string Status();
    // True when the report contains the text.
    bool Says(const std::string& text) { return Status().find(text) != std::string::npos; }

    // Ends it in order; its exit status, or minus the signal that ended it.
    int Stop();
    // Ends it at once, as if the line were pulled out.
    void Kill();

  private:
    std::string ReadLine();
    int End(int signal);

    pid_t pid_ = -1;
    int to_ = -1;
    int from_ = -1;
    std::string buffer_;
    std::string tty_;
};

}  // namespace test
