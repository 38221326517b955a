// What the tests of the check engine share: answers by name, a driver whose hook is seen, and the
// whole story of a step in one text.
#pragma once

#include <algorithm>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "support/fixtures.h"
#include "support/requests.h"

namespace test {

using Lines = std::vector<std::string>;

namespace answer {

inline Bytes State(unsigned char code, const Bytes& data = {}) {
    return Frame(code, data);
}
inline Bytes None() {
    return Frame(0xA0);
}
inline Bytes SaleAdd() {
    return Frame(0xA2);
}
inline Bytes Ready() {
    return Frame(0xC0);
}
inline Bytes CheckOut() {
    return Frame(0xC8);
}
// Goods code 1, one piece, not marked.
inline Bytes SaleCode(unsigned char code = 1, unsigned char marked = 0) {
    return Frame(0xA1, {0, code, 1, 0, 0, 1, marked});
}
inline Bytes Barcode(unsigned char marked = 0) {
    return Frame(0xA3, {1, 0, 0, 1, marked, 0});
}
inline Bytes Reset() {
    return Frame(0x90);
}
// One byte of the register's memory: the sale number, the last error.
inline Bytes Ram(unsigned char value) {
    return Frame(0x84, {value});
}
inline Bytes Statistics(unsigned checks, unsigned sales) {
    return Frame(0x8A, {0, 7, static_cast<unsigned char>(checks >> 8U),
                        static_cast<unsigned char>(checks), static_cast<unsigned char>(sales >> 8U),
                        static_cast<unsigned char>(sales), 0, 0, 0, 0, 0});
}
// What the command is answered with when the register is content and has nothing to say.
inline Bytes Done(unsigned char command) {
    switch (command) {
        case request::kEprom:
            return Frame(0x82, {0});
        case request::kClearCheck:
            return Frame(0x83);
        case request::kLock:
            return Frame(0xAF);
        case request::kSale:
            return Frame(0xC1, {0});
        case request::kDiscount:
            return Frame(0xB4);
        case request::kCard:
        case request::kQuery:
            return Frame(0xB5);
        case request::kCheckOut:
            return Frame(0xE4, {1});
        case request::kTitle:
            return Frame(0x97);
        case request::kCash:
            return Frame(0xE8, {0});
        case request::kKey:
            return Frame(0xA9);
        case request::kLockSwitch:
            return Frame(0xB7);
        case request::kResetInfo:
            return Frame(0x91);
        case request::kReset:
            return Frame(0x90);
        default:
            return {};
    }
}

}  // namespace answer

// Every command that only confirms is confirmed, unless the test queues something else for it.
inline void ConfirmAll(ScriptedLine& line) {
    for (const int command :
         {0x02, 0x03, 0x10, 0x21, 0x23, 0x24, 0x25, 0x27, 0x28, 0x29, 0x35, 0x36, 0x7E, 0x7F}) {
        const auto code = static_cast<unsigned char>(command);
        line.Always(code, answer::Done(code));
    }
}

// A driver that notes in the log what its host is told.
class HookedDriver : public TTarvoVesk {
  public:
    void event_checkprepare(unsigned char step, const ETarvoVesk* error) override {
        std::string told = "hook " + std::to_string(step);
        if (error != nullptr) {
            told += " error " + std::to_string(error->getCode());
        }
        World::Get().Note(told);
        if (on_hook) {
            on_hook(step);
        }
    }

    std::function<void(unsigned char step)> on_hook;
};

// A step whose operation fails so many times before it would succeed.
struct RetryCase {
    int failures;
    bool succeeds;
    std::string behind;  // traced behind the failures

    std::size_t Attempts() const { return static_cast<std::size_t>(std::min(failures + 1, 20)); }
    static std::string Name(const testing::TestParamInfo<RetryCase>& info) {
        return "Behind" + std::to_string(info.param.failures) + "Failures";
    }
};

inline std::string Repeat(int times, const std::string& text) {
    std::string all;
    for (int i = 0; i < times; ++i) {
        all += text;
    }
    return all;
}

template <typename Driver>
class EngineTestOf : public DriverTest<Driver> {
  protected:
    explicit EngineTestOf(kkm_ver version = kkm_ver_303) : DriverTest<Driver>(version) {
        ConfirmAll(this->line);
    }

    std::string Traced() const { return this->world.Traced(); }
    Lines Steps() const { return this->world.Steps(); }

    // What was traced from the first place of the text on.
    std::string TracedFrom(const std::string& text) const {
        const std::string all = Traced();
        const std::size_t at = all.find(text);
        return at == std::string::npos ? "(not traced)" : all.substr(at);
    }

    // How often the command was sent.
    long Count(const std::string& command) const {
        const Lines requests = this->world.Requests();
        return std::count_if(requests.begin(), requests.end(), [&](const std::string& request) {
            return request.substr(0, 2) == command;
        });
    }

    // From now on the log keeps the traces among the steps.
    void TellStory() {
        this->world.on_trace = [](const std::string& text) { World::Get().Note("| " + text); };
    }

    // Requests as "> 20", waits as "  50 ms", traces as "| text" with every line end as \n, the
    // hook as "hook 0".
    std::string Story() const {
        std::string story;
        for (const std::string& step : this->world.Steps()) {
            if (step.rfind("note ", 0) == 0) {
                for (const char c : step.substr(5)) {
                    story += c == '\n' ? std::string("\\n") : std::string(1, c);
                }
            } else if (step.rfind("sleep ", 0) == 0) {
                story += "  " + step.substr(6) + " ms";
            } else {
                story += "> " + step;
            }
            story += '\n';
        }
        return story;
    }
};

class EngineTest : public EngineTestOf<TTarvoVesk> {
  protected:
    using EngineTestOf::EngineTestOf;
};

}  // namespace test
