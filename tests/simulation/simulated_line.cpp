#include "simulation/simulated_line.h"

#include <algorithm>
#include <cerrno>
#include <limits>

#include "simulation/line_faults.h"

namespace simulation {
namespace {

constexpr Micros kForEver = std::numeric_limits<Micros>::max();
// A register gives up an unfinished request after such a silence.
constexpr Micros kSilenceUs = 20'000;
constexpr std::size_t kCommandAt = 3;
constexpr std::size_t kShortestFrame = 5;

}  // namespace

SimulatedLine::SimulatedLine(RegisterSide& side, Journal& journal, const LineSettings& settings,
                             const FaultPlan& plan)
    : side_(side),
      journal_(journal),
      settings_(settings),
      plan_(plan),
      random_(plan.seed),
      byte_us_(static_cast<Micros>((10'000'000 + settings.baud - 1) / settings.baud)) {}

int SimulatedLine::Open(Micros now) {
    if (open_fails_ || now < gone_until_) {
        open_fails_ = false;
        return ENOENT;
    }
    hung_up_ = false;
    gone_until_ = 0;
    input_.clear();
    outgoing_.clear();
    held_.clear();
    return 0;
}

void SimulatedLine::Close() {
    input_.clear();
    outgoing_.clear();
}

int SimulatedLine::Settings(Micros now) {
    if (settings_fail_ || hung_up_ || now < gone_until_) {
        settings_fail_ = false;
        return EIO;
    }
    return 0;
}

long SimulatedLine::Write(const unsigned char* bytes, std::size_t count, Micros now) {
    Deliver(now);
    const std::uint8_t command = count >= kShortestFrame ? bytes[kCommandAt] : std::uint8_t{0};
    written_.assign(bytes, bytes + count);
    written_at_ = now;
    previous_answer_.swap(last_answer_);
    last_answer_.clear();
    interrupts_waits_ = false;
    polls_to_error_ = -1;
    ExchangeFacts facts;
    facts.command = command;
    journal_.exchanges().push_back(facts);
    for (Transmission& held : held_) {
        held.start = now + held.start % 300'000;
        Transmit(held);
    }
    held_.clear();
    ChooseFaults(command, now);
    return WriteThrough(count, now);
}

// Puts the request on the line, as far as the host's side and the line let it.
long SimulatedLine::WriteThrough(std::size_t count, Micros now) {
    ExchangeFacts& facts = journal_.exchanges().back();
    if (hung_up_ || now < gone_until_) {
        facts.disturbed = true;
        return -EIO;
    }
    long result = static_cast<long>(count);
    spoiled_ = written_;
    for (const Fault& fault : faults_) {
        if (fault.kind == FaultKind::write_error) {
            return -EIO;
        }
        if (fault.kind == FaultKind::write_short) {
            result = static_cast<long>(fault.a % count);
            spoiled_.resize(static_cast<std::size_t>(result));
        }
        SpoilRequest(fault, spoiled_);
    }
    if (IsDead(now)) {
        facts.disturbed = true;
        return result;
    }
    if (driver_baud_ != settings_.baud) {
        return result;  // the register hears noise
    }
    Micros at = now;
    for (const unsigned char byte : spoiled_) {
        at += byte_us_;
        outgoing_.push({at, byte, Present()});
    }
    return result;
}

std::optional<Micros> SimulatedLine::NextInput(Micros now) {
    if (hung_up_ || now < gone_until_) {
        return now;  // poll reports the hang-up at once
    }
    // No request takes longer on the line than the shortest wait of the driver, so what the
    // register makes of it may be worked out ahead, unless something can be read before.
    Deliver(input_.empty() ? kForEver : std::max(now, input_.front().at));
    if (input_.empty()) {
        return std::nullopt;
    }
    return input_.front().at;
}

int SimulatedLine::Read(Micros now) {
    if (hung_up_ || now < gone_until_) {
        return kEndOfFile;
    }
    if (input_.empty() || input_.front().at > now) {
        return -EAGAIN;
    }
    const TimedByte byte = input_.front();
    input_.pop();
    if (byte.exchange != Present()) {
        journal_.exchanges().back().disturbed = true;
    }
    return byte.value;
}

void SimulatedLine::Flush(Micros now) {
    Deliver(now);
    while (!input_.empty() && input_.front().at <= now) {
        input_.pop();
    }
    outgoing_.clear();
}

void SimulatedLine::Deliver(Micros until) {
    while (!outgoing_.empty() && outgoing_.front().at <= until) {
        const TimedByte byte = outgoing_.front();
        outgoing_.pop();
        if (byte.at > last_arrival_ + kSilenceUs) {
            parser_.line_was_silent();
        }
        last_arrival_ = byte.at;
        parser_.add(static_cast<std::uint8_t>(byte.value));
        while (const auto request = parser_.next()) {
            Take(*request, byte.at);
        }
    }
}

void SimulatedLine::Take(const virtual_register::Request& request, Micros now) {
    if (IsDead(now)) {
        return;
    }
    ExchangeFacts& facts = journal_.exchanges().back();
    const bool as_written =
        !facts.taken && written_.size() == request.payload.size() + kShortestFrame &&
        written_[2] == request.net_number && written_[kCommandAt] == request.command &&
        std::equal(request.payload.begin(), request.payload.end(), written_.begin() + 4);
    (as_written ? facts.taken : facts.misread) = true;
    if (!as_written) {
        facts.disturbed = true;
        unsigned char bytes[1 + virtual_register::kLongestRequest];
        bytes[0] = request.command;
        std::copy(request.payload.begin(), request.payload.end(), bytes + 1);
        journal_.Add(EventKind::misread, now, 0, 0, bytes, 1 + request.payload.size());
    }
    if (const auto answer = side_.Take(request, now)) {
        Answer(*answer, now);
    }
}

void SimulatedLine::Answer(const virtual_register::Answer& answer, Micros now) {
    const virtual_register::FrameBytes frame =
        virtual_register::build_frame(answer, settings_.net_number);
    ExchangeFacts& facts = journal_.exchanges().back();
    facts.answer_at = journal_.Keep(frame.data(), frame.size());
    facts.answer_count = static_cast<std::uint16_t>(frame.size());
    last_answer_.assign(frame.begin(), frame.end());
    answer_.bytes = last_answer_;
    answer_.gaps.clear();
    answer_.start = now + settings_.latency_us;
    answer_.exchange = Present();
    answer_.broken_at = -1;
    answer_.held = false;
    answer_.ends_there = false;
    for (const Fault& fault : faults_) {
        SpoilAnswer(fault, answer_.bytes);
        DelayAnswer(fault, answer_);
    }
    if (answer_.held) {
        held_.push_back(answer_);
    } else {
        Transmit(answer_);
    }
}

// What the register sends first arrives first.
void SimulatedLine::Transmit(const Transmission& transmission) {
    if (sending_until_ > transmission.start) {
        journal_.exchanges()[transmission.exchange].disturbed = true;  // by what is late before it
    }
    Micros at = std::max(transmission.start, sending_until_);
    for (std::size_t i = 0; i < transmission.bytes.size(); ++i) {
        at += byte_us_ + (i < transmission.gaps.size() ? transmission.gaps[i] : 0);
        if (transmission.broken_at == static_cast<int>(i)) {
            input_.push({at, transmission.ending, transmission.exchange});
            if (transmission.ends_there) {
                break;
            }
            continue;
        }
        input_.push({at, transmission.bytes[i], transmission.exchange});
    }
    sending_until_ = at;
}

}  // namespace simulation
