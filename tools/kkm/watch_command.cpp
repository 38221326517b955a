#include "kkm/watch_command.h"

#include <ctime>
#include <nlohmann/json.hpp>
#include <optional>
#include <thread>

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
    std::vector<Figure> figures = StateAsFigures(look->state);
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

}  // namespace

ExitStatus RunWatch(const Address& address, const WatchOptions& options, Streams& streams) {
    std::string before;
    bool answered = false;
    for (int look = 0; options.looks == 0 || look < options.looks; ++look) {
        if (look > 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(options.interval_ms));
        }
        const auto seen = LookAtRegister(address);
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
