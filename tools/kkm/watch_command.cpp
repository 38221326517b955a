#include "kkm/watch_command.h"

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <ctime>
#include <nlohmann/json.hpp>
#include <optional>
#include <system_error>

#include "kkm/register_state.h"

namespace kkm {
namespace {

std::string TimeNow() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    char text[16];
    std::strftime(text, sizeof text, "%H:%M:%S", &local);
    return text;
}

std::vector<Figure> Seen(const std::optional<RegisterLook>& look) {
    if (!look) {
        return {{"state", "state", "no answer", nullptr}};
    }
    std::vector<Figure> figures = StateAsFigures(*look);
    if (look->counters) {
        figures.push_back(NumberFigure("tape_number", "control tape", look->counters->tape));
        figures.push_back(NumberFigure("checks", "checks", look->counters->checks));
        figures.push_back(NumberFigure("sales", "sales", look->counters->sales));
    }
    return figures;
}

// "state 0xC0 ks_kkmgo: ready, checks 3, ..."
std::string InOneLine(const std::vector<Figure>& figures) {
    std::string line;
    for (const Figure& figure : figures) {
        if (figure.label.empty() || figure.key == "baud") {
            continue;
        }
        const std::string label = figure.label.substr(figure.label.find_first_not_of(' '));
        line += line.empty() ? figure.text : ", " + label + " " + figure.text;
    }
    return line;
}

std::string InOneObject(const std::vector<Figure>& figures, const std::string& time) {
    nlohmann::ordered_json object = {{"time", time}};
    for (const Figure& figure : figures) {
        object[figure.key] = figure.value;
    }
    return object.dump();
}

// Ctrl-C is how a watch ends: it waits for the look that is under way. A shell that had it ignored
// keeps that.
class Interrupt {
  public:
    Interrupt() {
        sigemptyset(&signals_);
        struct sigaction now {};
        sigaction(SIGINT, nullptr, &now);
        if (now.sa_handler != SIG_IGN) {
            sigaddset(&signals_, SIGINT);
        }
        pthread_sigmask(SIG_BLOCK, &signals_, &before_);
    }
    ~Interrupt() {
        ComesWithin(0);
        pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;

    bool ComesWithin(int ms) {
        const timespec time{ms / 1000, ms % 1000 * 1'000'000L};
        return sigtimedwait(&signals_, nullptr, &time) == SIGINT;
    }

  private:
    sigset_t signals_{};
    sigset_t before_{};
};

// An adapter that is pulled out may come back; a name that never was there is a wrong one, and a
// device that this user may not open stays so.
bool MayBeOpened(const std::string& device, Streams& streams) {
    if (access(device.c_str(), R_OK | W_OK) == 0) {
        return true;
    }
    streams.err << "kkm: " << device << ": " << std::generic_category().message(errno) << std::endl;
    return false;
}

}  // namespace

ExitStatus RunWatch(const Address& address, const WatchOptions& options, Streams& streams) {
    Interrupt interrupt;
    std::string before;
    bool answered = false;
    for (int look = 0; options.looks == 0 || look < options.looks; ++look) {
        if (look > 0 && interrupt.ComesWithin(options.interval_ms)) {
            return ExitStatus::done;
        }
        const auto seen = LookAtRegister(address);
        if (look == 0 && !seen && !MayBeOpened(address.Device(), streams)) {
            return ExitStatus::no_connection;
        }
        answered = answered || seen.has_value();
        const std::vector<Figure> figures = Seen(seen);
        const std::string line = InOneLine(figures);
        if (line != before) {
            if (options.as_json) {
                streams.out << InOneObject(figures, TimeNow()) << std::endl;
            } else {
                streams.out << TimeNow() << "  " << line << std::endl;
            }
            before = line;
        }
        if (!streams.out) {
            break;  // nobody reads any more
        }
    }
    return answered ? ExitStatus::done : ExitStatus::no_connection;
}

}  // namespace kkm
