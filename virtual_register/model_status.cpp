// What each state tells in its status answer.
#include <cstdlib>

#include "model.h"

namespace virtual_register {

Answer Model::status() {
    if (late_left_ > 0) {
        --late_left_;
        return late_answer_;
    }
    return status_of(state());
}

Answer Model::status_of(State state) const {
    Answer answer;
    answer.code = static_cast<std::uint8_t>(state);
    AnswerPayload& to = answer.payload;
    const std::uint8_t lines = memory_.sale_number();
    switch (state) {
        case State::none:
        case State::ready:
        case State::key_lock:
            break;
        case State::sale_code:
            to.add_big_endian(query_.code, 2);
            add_query_status(to);
            break;
        case State::sale_barcode:
            add_query_status(to);
            to.add(static_cast<std::uint8_t>(query_.barcode.size()));
            to.add(query_.barcode.data(), query_.barcode.size());
            break;
        case State::sale_added:
            add_line_status(shown_line_, static_cast<std::uint8_t>(lines - 1), to);
            break;
        case State::sale_deleted:
            add_line_status(shown_line_, static_cast<std::uint8_t>(lines + 1), to);
            break;
        case State::sale_refused:
            add_document(to);
            to.add(lines);
            break;
        case State::check_cleared:
            add_document(to);
            to.add(cleared_lines_);
            to.add(0);  // not marked
            break;
        case State::free_sale:
            add_free_sale_status(to);
            break;
        case State::check_out:
            add_check_out_status(to);
            break;
        case State::discount:
            add_discount_status(to);
            break;
        case State::discount_card:
            add_card_status(to);
            break;
        case State::switched_on:
            add_document(to);
            to.add(static_cast<std::uint8_t>(memory_.section() - 1));
            break;
        case State::shift_closed:
            to.add_big_endian(memory_.tape_number, 2);
            break;
        case State::weight:
            to.add(weight_.data(), weight_.size());
            break;
    }
    return answer;
}

void Model::add_document(AnswerPayload& to) const {
    to.add_big_endian(memory_.tape_number, 2);
    to.add_big_endian(memory_.checks, 2);
}

void Model::add_query_status(AnswerPayload& to) const {
    to.add(query_.department);
    to.add(query_.weighed ? 1 : 0);
    to.add_big_endian(query_.quantity, 2);
    to.add(query_.marked ? 1 : 0);
}

void Model::add_free_sale_status(AnswerPayload& to) const {
    add_document(to);
    to.add(memory_.sale_number());
    to.add(0);  // not marked
    to.add(shown_line_.department);
    to.add(0);  // no attributes
    to.add(0);  // no percentage on a single line
    to.add(shown_line_.weighed ? 1 : 0);
    to.add_big_endian(shown_line_.quantity_on_wire(), 2);
    to.add_big_endian(shown_line_.price_kopecks, 3);
    to.add_big_endian(shown_line_.amount_kopecks, 3);
}

void Model::add_discount_status(AnswerPayload& to) const {
    const OpenCheck& check = memory_.check;
    add_document(to);
    to.add(memory_.sale_number());
    to.add(static_cast<std::uint8_t>(check.type));
    to.add(0);
    to.add_big_endian(static_cast<std::uint64_t>(check.total_kopecks()), 4);
    to.add(check.discount_percent < 0 ? 0 : 1);  // 0 takes off
    to.add(static_cast<std::uint8_t>(std::abs(check.discount_percent)));
}

void Model::add_card_status(AnswerPayload& to) const {
    const OpenCheck& check = memory_.check;
    add_document(to);
    to.add(memory_.sale_number());
    to.add(static_cast<std::uint8_t>(check.type));
    to.add_big_endian(static_cast<std::uint64_t>(check.total_kopecks()), 5);
    to.add(static_cast<std::uint8_t>(check.card_number.size()));
    to.add(check.card_number.data(), check.card_number.size());
}

void Model::add_line_status(const SaleLine& line, std::uint8_t sale, AnswerPayload& to) const {
    add_document(to);
    to.add(sale);
    to.add(line.department);
    to.add(0);  // no attributes
    to.add(0);  // no percentage on a single line
    to.add_big_endian(line.code, 2);
    to.add(line.weighed ? 1 : 0);
    to.add_big_endian(line.quantity_on_wire(), 2);
    to.add(0);  // not marked
    to.add_big_endian(line.price_kopecks, 3);
    to.add(line.printed_name());
}

void Model::add_check_out_status(AnswerPayload& to) const {
    const OpenCheck& check = memory_.check;
    const std::int64_t discount = check.discount_kopecks();
    add_document(to);
    to.add(memory_.sale_number());
    to.add(static_cast<std::uint8_t>(check.type));
    to.add(static_cast<std::uint8_t>(memory_.section() - 1));
    to.add(0);
    to.add_big_endian(static_cast<std::uint64_t>(check.total_kopecks()), 4);
    to.add(check.discount_percent < 0 ? 0 : 1);  // 0 takes off
    to.add(static_cast<std::uint8_t>(std::abs(check.discount_percent)));
    to.add(0);
    to.add_big_endian(static_cast<std::uint64_t>(std::abs(discount)), 4);
}

}  // namespace virtual_register
