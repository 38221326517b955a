#include "kkm/outcomes.h"

#include <algorithm>
#include <iomanip>
#include <nlohmann/json.hpp>
#include <sstream>

#include "VeskTarvoM5/VeskTarvoM5.h"
#include "kkm/figures.h"
#include "kkm/report.h"

namespace kkm {
namespace {

constexpr const char* kColumns[] = {"key",          "outcome",     "reason",    "attempts",
                                    "total",        "lines",       "serial",    "tape",
                                    "first_record", "intended_at", "decided_at"};

std::string Known(int number) {
    return number < 0 ? "" : std::to_string(number);
}

// "17 of tape 4, 40 records"
std::string CountersText(int checks, int tape, int records) {
    return checks < 0 ? "not known"
                      : "check " + Known(checks) + " of tape " + Known(tape) + ", " +
                            Known(records) + " records";
}

std::vector<std::string> Cells(const KeyedOutcome& row) {
    const kkmcheck_outcome& outcome = row.outcome;
    return {row.key,
            OutcomeName(outcome.outcome),
            kkmcheck_reason_name(outcome.reason),
            Known(outcome.attempts),
            MoneyText(outcome.total),
            Known(outcome.line_count),
            Known(outcome.serial_number),
            Known(outcome.tape_before),
            Known(outcome.first_record),
            outcome.intended_at,
            outcome.decided_at};
}

// Quoted where a reader of comma-separated values needs it.
std::string CsvCell(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) {
        return text;
    }
    std::string quoted = "\"";
    for (const char character : text) {
        quoted += character == '"' ? "\"\"" : std::string(1, character);
    }
    return quoted + '"';
}

// A key's control characters would move the terminal's cursor and break the rows.
std::string Shown(const std::string& text) {
    constexpr const char* kDigits = "0123456789abcdef";
    std::string shown;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte < 0x20 || byte == 0x7f) {
            shown += {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 15]};
        } else {
            shown += character;
        }
    }
    return shown;
}

// Keys are bytes of the host's own; what is no UTF-8 in them must not cost the answer.
std::string Text(const nlohmann::ordered_json& json) {
    return json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

nlohmann::ordered_json Json(const KeyedOutcome& row) {
    const kkmcheck_outcome& outcome = row.outcome;
    const auto number = [](int value) {
        return value < 0 ? nlohmann::ordered_json() : nlohmann::ordered_json(value);
    };
    const auto counters = [&](int tape, int checks, int records) -> nlohmann::ordered_json {
        return {{"tape", number(tape)}, {"checks", number(checks)}, {"records", number(records)}};
    };
    auto records = nlohmann::ordered_json::array();
    std::istringstream lines(outcome.records);
    for (std::string line; std::getline(lines, line);) {
        records.push_back(line);
    }
    return {
        {"key", row.key},
        {"outcome", OutcomeName(outcome.outcome)},
        {"reason", kkmcheck_reason_name(outcome.reason)},
        {"text", outcome.text},
        {"attempts", outcome.attempts},
        {"lines", outcome.line_count},
        {"total", MoneyFigure("", "", outcome.total).value},
        {"driver_result", number(outcome.driver_result)},
        {"driver_error", outcome.driver_error},
        {"firmware", number(outcome.firmware)},
        {"serial_number", number(outcome.serial_number)},
        {"before", counters(outcome.tape_before, outcome.checks_before, outcome.records_before)},
        {"after", counters(outcome.tape_after, outcome.checks_after, outcome.records_after)},
        {"first_record", number(outcome.first_record)},
        {"records_compared", records},
        {"intended_at", outcome.intended_at},
        {"sending_at", outcome.sending_at},
        {"returned_at", outcome.returned_at},
        {"decided_at", outcome.decided_at}};
}

// Texts of any length in lines of 80 letters.
std::string Wrapped(const std::string& text) {
    std::istringstream words(text);
    std::string wrapped;
    std::size_t width = 0;
    for (std::string word; words >> word;) {
        const bool fits = width + word.size() + 1 <= 80;
        wrapped += width == 0 ? "" : fits ? " " : "\n";
        width = fits ? width + word.size() + 1 : word.size();
        wrapped += word;
    }
    return wrapped;
}

}  // namespace

std::string OutcomeName(int verdict) {
    switch (verdict) {
        case KKMCHECK_PRINTED:
            return "printed";
        case KKMCHECK_NOT_PRINTED:
            return "not printed";
        default:
            return "unknown";
    }
}

void WriteOutcome(const KeyedOutcome& row, bool as_json, std::ostream& out) {
    if (as_json) {
        out << Text(Json(row)) << std::endl;
        return;
    }
    const kkmcheck_outcome& outcome = row.outcome;
    std::vector<Figure> figures{
        TextFigure("", Shown(row.key), OutcomeName(outcome.outcome)),
        TextFigure("", "check",
                   Known(outcome.line_count) +
                       (outcome.line_count == 1 ? " line, total " : " lines, total ") +
                       MoneyText(outcome.total) + ", tried " + Known(outcome.attempts) +
                       (outcome.attempts == 1 ? " time" : " times")),
        TextFigure(
            "", "before",
            CountersText(outcome.checks_before, outcome.tape_before, outcome.records_before)),
        TextFigure("", "after",
                   CountersText(outcome.checks_after, outcome.tape_after, outcome.records_after))};
    if (outcome.driver_error != 0) {
        figures.push_back(TextFigure(
            "", "driver",
            std::to_string(outcome.driver_error) + " " + KKMErrorName(outcome.driver_error)));
    }
    out << FiguresAsText(figures) << Wrapped(outcome.text) << std::endl;
}

void WriteOutcomesAsTable(const std::vector<KeyedOutcome>& outcomes, std::ostream& out) {
    std::vector<std::vector<std::string>> rows;
    rows.emplace_back(std::begin(kColumns), std::end(kColumns));
    for (const KeyedOutcome& outcome : outcomes) {
        rows.push_back(Cells(outcome));
        rows.back().front() = Shown(outcome.key);
    }
    std::vector<std::size_t> widths(rows.front().size());
    for (const auto& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], row[i].size());
        }
    }
    for (const auto& row : rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            line += (i == 0 ? "" : "  ") + row[i] + std::string(widths[i] - row[i].size(), ' ');
        }
        line.erase(line.find_last_not_of(' ') + 1);
        out << line << '\n';
    }
    out << std::flush;
}

void WriteOutcomesAsCsv(const std::vector<KeyedOutcome>& outcomes, std::ostream& out) {
    const auto write = [&out](const auto& cells) {
        const char* comma = "";
        for (const auto& cell : cells) {
            out << comma << CsvCell(cell);
            comma = ",";
        }
        out << "\r\n";
    };
    write(kColumns);
    for (const KeyedOutcome& outcome : outcomes) {
        write(Cells(outcome));
    }
    out << std::flush;
}

void WriteOutcomesAsJson(const std::vector<KeyedOutcome>& outcomes, std::ostream& out) {
    auto list = nlohmann::ordered_json::array();
    for (const KeyedOutcome& outcome : outcomes) {
        list.push_back(Json(outcome));
    }
    out << Text(nlohmann::ordered_json{{"checks", list}}) << std::endl;
}

}  // namespace kkm
