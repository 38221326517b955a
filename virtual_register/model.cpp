#include "model.h"

#include <algorithm>
#include <utility>

namespace virtual_register {

Model::Model(Memory memory, const Settings& settings)
    : memory_(std::move(memory)), settings_(settings) {
    power_on();
}

std::optional<Answer> Model::handle(const Request& request, std::int64_t now_us) {
    advance(now_us);
    if (!powered_ || printing()) {
        return std::nullopt;
    }
    if (request.net_number != 0 && request.net_number != settings_.net_number) {
        return std::nullopt;
    }
    const CommandRow* row = find_command(request.command);
    const int firmware = memory_.firmware().number;
    if (row == nullptr || firmware < row->first_firmware || firmware > row->last_firmware ||
        request.payload.size() < row->payload_min || request.payload.size() > row->payload_max) {
        return std::nullopt;
    }
    if (row->command == Command::status) {
        return status();
    }
    Answer answer;
    answer.code = row->answer;
    if (const auto reply = take_refusal(row->command)) {
        answer.payload.add(*reply);
        return answer;
    }
    if (!execute(row->command, request.payload, answer.payload)) {
        return std::nullopt;
    }
    return answer;
}

void Model::advance(std::int64_t now_us) {
    if (now_us > now_us_) {
        now_us_ = now_us;
    }
}

bool Model::execute(Command command, const RequestPayload& payload, AnswerPayload& answer) {
    switch (command) {
        case Command::reset_status:
            reset_status();
            return true;
        case Command::simple_lock:
            simple_lock_ = true;
            return true;
        case Command::lock_switch:
            switch_lock_ = payload[0] == 0;
            return true;
        case Command::key:
            key_pressed(payload[0]);
            return true;
        case Command::version:
            answer.add(memory_.firmware().version_answer.data(),
                       memory_.firmware().version_answer.size());
            return true;
        default:
            return execute_check(command, payload, answer) ||
                   execute_service(command, payload, answer);
    }
}

std::optional<std::uint8_t> Model::take_refusal(Command command) {
    for (auto refusal = refusals_.begin(); refusal != refusals_.end(); ++refusal) {
        if (refusal->command == command && --refusal->countdown == 0) {
            const std::uint8_t reply = refusal->reply;
            refusals_.erase(refusal);
            return reply;
        }
    }
    return std::nullopt;
}

void Model::refuse(Command command, unsigned nth, std::uint8_t reply) {
    if (nth > 0) {
        refusals_.push_back({command, nth, reply});
    }
}

void Model::set_states_late(unsigned polls) {
    late_polls_ = polls;
    late_left_ = std::min(late_left_, polls);
}

void Model::set_state(State state) {
    if (state == state_) {
        return;
    }
    if (late_polls_ > 0) {
        late_answer_ = status_of(this->state());
        late_left_ = late_polls_;
    }
    state_ = state;
}

void Model::reset_status() {
    if (simple_lock_) {
        simple_lock_ = false;
    } else if (state_ == State::check_out) {
        register_check();
    } else if (state_ == State::ready && memory_.check.stage == OpenCheck::Stage::closed) {
        set_state(State::check_out);
    } else {
        set_state(State::none);
    }
}

void Model::power_off() {
    powered_ = false;
}

void Model::power_on() {
    powered_ = true;
    simple_lock_ = false;
    switch_lock_ = false;
    clear_armed_ = false;
    late_left_ = 0;
    deaf_until_us_ = 0;
    indicator_.clear();
    state_ = State::switched_on;
    leave_check_out();
}

}  // namespace virtual_register
