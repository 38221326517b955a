#include "system/register_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

namespace test {

namespace {

constexpr int kPatienceMs = 10000;
constexpr auto kLastStatusLine = "indicator ";

}  // namespace

RegisterProcess::RegisterProcess(const std::vector<std::string>& options, Prompt prompt)
    : prompt_(prompt) {
    int input[2];
    int output[2];
    if (pipe2(input, O_CLOEXEC) != 0 || pipe2(output, O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe for the register");
    }
    std::vector<std::string> words{TARVO_REGISTER, "--quiet"};
    if (Prompted()) {
        words.insert(words.end(), {"--cashier", "prompt"});
    }
    words.insert(words.end(), options.begin(), options.end());
    std::vector<char*> arguments;
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    pid_ = fork();
    if (pid_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        dup2(input[0], STDIN_FILENO);
        dup2(output[1], STDOUT_FILENO);
        execv(arguments[0], arguments.data());
        _exit(127);
    }
    close(input[0]);
    close(output[1]);
    to_ = input[1];
    from_ = output[0];
    const std::string first = ReadLine();
    if (first.rfind("tty ", 0) != 0) {
        throw std::runtime_error("the register began with: " + first);
    }
    tty_ = first.substr(4);
    if (Prompted()) {
        Status();  // swallows the greeting
    }
}

RegisterProcess::~RegisterProcess() {
    Stop();
    close(to_);
    close(from_);
}

void RegisterProcess::Say(const std::string& line) {
    const std::string typed = line + '\n';
    if (write(to_, typed.data(), typed.size()) != static_cast<ssize_t>(typed.size())) {
        throw std::runtime_error("the register does not listen to: " + line);
    }
    // It answers what was typed together before it writes files; the second answer comes behind
    // that.
    Status();
    Status();
}

std::string RegisterProcess::Status() {
    static constexpr char kQuestion[] = "status\n";
    if (write(to_, kQuestion, sizeof kQuestion - 1) != sizeof kQuestion - 1) {
        throw std::runtime_error("the register does not listen");
    }
    std::string status;
    for (std::string line; line.rfind(kLastStatusLine, 0) != 0;) {
        line = ReadLine();
        status += line + '\n';
    }
    return status;
}

std::string RegisterProcess::ReadLine() {
    std::size_t end = 0;
    while ((end = buffer_.find('\n')) == std::string::npos) {
        pollfd waited{from_, POLLIN, 0};
        char bytes[512];
        const ssize_t count =
            poll(&waited, 1, kPatienceMs) == 1 ? read(from_, bytes, sizeof bytes) : 0;
        if (count <= 0) {
            throw std::runtime_error("the register fell silent behind: " + buffer_);
        }
        buffer_.append(bytes, static_cast<std::size_t>(count));
    }
    const std::string line = buffer_.substr(0, end);
    buffer_.erase(0, end + 1);
    return line;
}

int RegisterProcess::Stop() {
    return End(SIGTERM);
}

void RegisterProcess::Kill() {
    End(SIGKILL);
}

int RegisterProcess::End(int signal) {
    if (pid_ < 0) {
        return 0;
    }
    int status = 0;
    kill(pid_, signal);
    waitpid(pid_, &status, 0);
    pid_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

}  // namespace test
