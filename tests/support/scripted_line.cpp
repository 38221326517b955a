#include "support/scripted_line.h"

#include <cerrno>
#include <utility>

namespace test {

Bytes Frame(unsigned char code, const Bytes& payload, unsigned char net_num) {
    Bytes frame{0x00, static_cast<unsigned char>(payload.size() + 3), net_num, code};
    unsigned sum = 0U + net_num + code;
    for (const unsigned char byte : payload) {
        frame.push_back(byte);
        sum += byte;
    }
    frame.push_back(static_cast<unsigned char>(sum));
    return frame;
}

ScriptedLine& ScriptedLine::Answer(unsigned char command, Reply reply) {
    queued_[command].push_back(std::move(reply));
    return *this;
}

ScriptedLine& ScriptedLine::Answers(unsigned char command, int count, const Reply& reply) {
    for (int i = 0; i < count; ++i) {
        Answer(command, reply);
    }
    return *this;
}

ScriptedLine& ScriptedLine::Always(unsigned char command, Reply reply) {
    standing_[command] = std::move(reply);
    return *this;
}

std::size_t ScriptedLine::QueuedAnswers() const {
    std::size_t count = 0;
    for (const auto& [command, replies] : queued_) {
        count += replies.size();
    }
    return count;
}

void ScriptedLine::Inject(const Reply& reply, Micros now) {
    Micros at = now + Micros{reply.first_ms} * 1000;
    for (std::size_t i = 0; i < reply.bytes.size(); ++i) {
        const auto gap = reply.gaps_ms.find(i);
        if (gap != reply.gaps_ms.end()) {
            at += Micros{gap->second} * 1000;
        }
        input_.push_back({at, reply.bytes[i], true});
    }
    if (reply.ending != -EAGAIN) {
        input_.push_back({at, reply.ending, false});
    }
}

long ScriptedLine::Write(const unsigned char* bytes, std::size_t count, Micros now) {
    if (!write_results_.empty()) {
        const long result = write_results_.front();
        write_results_.pop_front();
        return result;
    }
    if (!cut_ && count >= 5) {
        const unsigned char command = bytes[3];
        auto& queue = queued_[command];
        Reply reply;
        if (!queue.empty()) {
            reply = queue.front();
            queue.pop_front();
        } else if (const auto standing = standing_.find(command); standing != standing_.end()) {
            reply = standing->second;
        }
        if (reply.at_request) {
            reply.at_request();
        }
        Inject(reply, now);
    }
    return static_cast<long>(count);
}

std::optional<Micros> ScriptedLine::NextInput(Micros /*now*/) {
    if (input_.empty()) {
        return std::nullopt;
    }
    return input_.front().at;
}

long ScriptedLine::Read(unsigned char* to, Micros now) {
    if (input_.empty() || input_.front().at > now) {
        return -EAGAIN;
    }
    const Event event = input_.front();
    if (!event.is_byte) {
        return event.value;  // an ending stays
    }
    input_.pop_front();
    *to = static_cast<unsigned char>(event.value);
    return 1;
}

void ScriptedLine::Flush(Micros now) {
    // Only what has arrived can be dropped.
    while (!input_.empty() && input_.front().at <= now) {
        input_.pop_front();
    }
}

}  // namespace test
