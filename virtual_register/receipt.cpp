#include "receipt.h"

#include <algorithm>
#include <cstdio>

#include "calendar.h"
#include "cp866.h"

namespace virtual_register {
namespace {

// The register's own words, turned into its code page once.
struct Labels {
    std::string register_number = to_cp866("КАССА ");
    std::string check = to_cp866("ЧЕК ");
    std::string copy = to_cp866("КОПИЯ");
    std::string discount = to_cp866("СКИДКА ");
    std::string surcharge = to_cp866("НАДБАВКА ");
    std::string total = to_cp866("ИТОГО");
    std::string cash = to_cp866("НАЛИЧНЫМИ");
    std::string change = to_cp866("СДАЧА");
    std::string card = to_cp866("КАРТА ");
    std::string report = to_cp866("ОТЧЕТ С ГАШЕНИЕМ");
    std::string shift = to_cp866("СМЕНА ");
    std::string checks = to_cp866("ЧЕКОВ");
    std::string turnover = to_cp866("ОБОРОТ");
    std::string drawer = to_cp866("В КАССЕ");
    std::string sale = to_cp866("ПРОДАЖА");
    std::string refund = to_cp866("ВОЗВРАТ");
    std::string credit = to_cp866("КРЕДИТ");
    std::string paid_in = to_cp866("ВНЕСЕНИЕ");
    std::string paid_out = to_cp866("ВЫПЛАТА");
    std::string service = to_cp866("СЛУЖЕБНЫЙ");
};

const Labels& words() {
    static const Labels all;
    return all;
}

const std::string& type_word(CheckType type) {
    switch (type) {
        case CheckType::refund:
            return words().refund;
        case CheckType::credit:
            return words().credit;
        case CheckType::paid_in:
            return words().paid_in;
        case CheckType::paid_out:
            return words().paid_out;
        case CheckType::service:
            return words().service;
        case CheckType::sale:
            break;
    }
    return words().sale;
}

std::string quantity(const SaleLine& line) {
    if (!line.weighed) {
        return std::to_string(line.quantity_thousandths / 1000);
    }
    char text[16];
    std::snprintf(text, sizeof text, "%u.%03u", line.quantity_thousandths / 1000,
                  line.quantity_thousandths % 1000);
    return text;
}

// Left and right on one line; on two when they would meet.
void two_sided(std::string_view left, std::string_view right, std::vector<PaperLine>& to) {
    if (left.size() + right.size() >= kPaperWidth) {
        to.push_back(normal_line(left));
        left = {};
    }
    PaperLine line = normal_line(left);
    for (std::size_t i = left.size(); i + right.size() < kPaperWidth; ++i) {
        line.text.add(' ');
    }
    line.text.add(right);
    to.push_back(line);
}

void wrapped(std::string_view text, std::vector<PaperLine>& to) {
    while (!text.empty()) {
        to.push_back(normal_line(text.substr(0, kPaperWidth)));
        text.remove_prefix(std::min(text.size(), kPaperWidth));
    }
}

// Rows of a title, centred on the paper; rows of nothing but padding are left out.
void title_rows(std::string_view title, std::vector<PaperLine>& to) {
    for (std::size_t at = 0; at < title.size(); at += Memory::kTitleRow) {
        const std::string_view row = title.substr(at, Memory::kTitleRow);
        if (without_padding(row).empty()) {
            continue;
        }
        PaperLine line;
        for (std::size_t i = 0; i < (kPaperWidth - Memory::kTitleRow) / 2; ++i) {
            line.text.add(' ');
        }
        line.text.add(row);
        to.push_back(line);
    }
}

std::string stamp(std::int64_t at_s) {
    const CalendarTime time = calendar_time(at_s);
    char text[32];
    std::snprintf(text, sizeof text, "%02d.%02d.%02d %02d:%02d", time.day % 100, time.month % 100,
                  time.year % 100, time.hour % 100, time.minute % 100);
    return text;
}

void goods(const SaleLine& line, std::vector<PaperLine>& to) {
    wrapped(line.printed_name(), to);
    two_sided(quantity(line) + " x " + money(line.price_kopecks), "=" + money(line.amount_kopecks),
              to);
}

void payment(const PrintedCheck& check, std::vector<PaperLine>& to) {
    const Labels& word = words();
    if (check.discount_percent != 0) {
        const bool down = check.discount_percent < 0;
        two_sided(
            (down ? word.discount : word.surcharge) + std::to_string(check.discount_percent) + "%",
            money(check.discount_kopecks), to);
    }
    if (!check.card_number.empty()) {
        wrapped(word.card + std::string(check.card_number.text()), to);
    }
    two_sided(word.total, "=" + money(check.total_kopecks), to);
    if (check.cash_kopecks != 0) {
        two_sided(word.cash, money(check.cash_kopecks), to);
    }
    if (check.change_kopecks != 0) {
        two_sided(word.change, money(check.change_kopecks), to);
    }
}

}  // namespace

std::string money(std::int64_t kopecks) {
    const bool negative = kopecks < 0;
    const auto size = static_cast<std::uint64_t>(negative ? -kopecks : kopecks);
    std::string text = negative ? "-" : "";
    text += std::to_string(size / 100);
    text += '.';
    text += static_cast<char>('0' + size / 10 % 10);
    text += static_cast<char>('0' + size % 10);
    return text;
}

void compose_receipt(const PrintedCheck& check, const Memory& memory, bool copy,
                     std::vector<PaperLine>& to) {
    const Labels& word = words();
    title_rows(memory.header(), to);
    wrapped(word.register_number + std::string(without_padding(memory.serial())), to);
    two_sided(word.check + std::to_string(check.number), stamp(check.registered_at_s), to);
    two_sided(type_word(check.type), word.shift + std::to_string(check.tape_number), to);
    if (copy) {
        to.push_back(wide_line(word.copy));
    }
    for (const SaleLine& line : check.lines) {
        goods(line, to);
    }
    payment(check, to);
    title_rows(memory.footer(), to);
    PaperLine cut;
    cut.kind = PaperLine::Kind::cut;
    to.push_back(cut);
}

void compose_shift_report(const Memory& memory, std::int64_t at_s, std::vector<PaperLine>& to) {
    const Labels& word = words();
    title_rows(memory.header(), to);
    wrapped(word.register_number + std::string(without_padding(memory.serial())), to);
    to.push_back(normal_line(word.report));
    two_sided(word.shift + std::to_string(memory.tape_number), stamp(at_s), to);
    two_sided(word.checks, std::to_string(memory.checks), to);
    two_sided(word.turnover, money(memory.tape.turnover_kopecks()), to);
    two_sided(word.drawer, money(memory.drawer_kopecks), to);
    PaperLine cut;
    cut.kind = PaperLine::Kind::cut;
    to.push_back(cut);
}

}  // namespace virtual_register
