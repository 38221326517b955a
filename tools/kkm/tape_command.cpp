#include "kkm/tape_command.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <nlohmann/json.hpp>
#include <sstream>
#include <vector>

#include "VeskTarvoM5/VeskTarvoM5.h"
#include "kkm/figures.h"
#include "kkm/progress.h"
#include "kkm/report.h"

namespace kkm {
namespace {

struct Record {
    int number = 0;
    unsigned char kind = 0;
    unsigned char selector = 0;
    double sum = 0;
    double amounts[3] = {};
    double signed_value = 0;
    double quantity = 0;
    unsigned char marked = 0;
    unsigned short code = 0;
    unsigned char code_bytes[4] = {};
};

Record ReadRecord(int number) {
    Record record;
    record.number = number;
    Require(ReadSaleFromKL(number, &record.kind, &record.selector, &record.sum, &record.amounts[0],
                           &record.amounts[1], &record.amounts[2], &record.signed_value,
                           &record.quantity, &record.marked, &record.code, &record.code_bytes[0],
                           &record.code_bytes[1], &record.code_bytes[2], &record.code_bytes[3]),
            ExitStatus::not_read, "record " + std::to_string(number) + " could not be read");
    return record;
}

std::string Fixed(double value, int digits) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(digits) << value;
    return text.str();
}

// The columns, as people and programs know them.
constexpr const char* kColumns[] = {"number",   "kind",    "selector", "sum",
                                    "amount2",  "amount3", "amount4",  "signed_value",
                                    "quantity", "marked",  "code",     "code_bytes"};

std::vector<std::string> Cells(const Record& record) {
    std::string bytes;
    for (const unsigned char byte : record.code_bytes) {
        char hex[3];
        std::snprintf(hex, sizeof hex, "%02X", static_cast<unsigned>(byte));
        bytes += hex;
    }
    return {std::to_string(record.number),   std::to_string(record.kind),
            std::to_string(record.selector), MoneyText(record.sum),
            MoneyText(record.amounts[0]),    MoneyText(record.amounts[1]),
            MoneyText(record.amounts[2]),    Fixed(record.signed_value, 0),
            Fixed(record.quantity, 3),       record.marked != 0 ? "yes" : "no",
            std::to_string(record.code),     bytes};
}

void WriteTable(const std::vector<Record>& records, std::ostream& out) {
    std::vector<std::vector<std::string>> rows;
    rows.emplace_back(std::begin(kColumns), std::end(kColumns));
    for (const Record& record : records) {
        rows.push_back(Cells(record));
    }
    std::vector<std::size_t> widths(rows.front().size());
    for (const auto& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], row[i].size());
        }
    }
    for (const auto& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            out << (i == 0 ? "" : "  ") << std::setw(static_cast<int>(widths[i])) << row[i];
        }
        out << '\n';
    }
}

void WriteCsv(const std::vector<Record>& records, std::ostream& out) {
    const auto write = [&out](const auto& cells) {
        const char* comma = "";
        for (const auto& cell : cells) {
            out << comma << cell;
            comma = ",";
        }
        out << "\r\n";
    };
    write(kColumns);
    for (const Record& record : records) {
        write(Cells(record));
    }
}

void WriteJson(const std::vector<Record>& records, const RegisterFailure* failure,
               std::ostream& out) {
    auto list = nlohmann::ordered_json::array();
    const auto money = [](double value) { return MoneyFigure("", "", value).value; };
    for (const Record& record : records) {
        list.push_back({{"number", record.number},
                        {"kind", record.kind},
                        {"selector", record.selector},
                        {"sum", money(record.sum)},
                        {"amount2", money(record.amounts[0])},
                        {"amount3", money(record.amounts[1])},
                        {"amount4", money(record.amounts[2])},
                        {"signed_value", record.signed_value},
                        {"quantity", std::round(record.quantity * 1000) / 1000},
                        {"marked", record.marked != 0},
                        {"code", record.code},
                        {"code_bytes", Cells(record).back()}});
    }
    nlohmann::ordered_json json{{"records", list}};
    if (failure != nullptr) {
        json["error"] = ErrorAsJson(*failure);
    }
    out << json.dump(2) << '\n';
}

// With the failure that ended the reading, if one did.
void Write(const std::vector<Record>& records, TapeFormat format, const RegisterFailure* failure,
           std::ostream& out) {
    switch (format) {
        case TapeFormat::table:
            WriteTable(records, out);
            break;
        case TapeFormat::csv:
            WriteCsv(records, out);
            break;
        case TapeFormat::json:
            WriteJson(records, failure, out);
            break;
    }
    out << std::flush;
}

void ReadRecords(const Address& address, const TapeRange& range, std::vector<Record>& records,
                 Streams& streams) {
    const Connection connection(address);
    int next = 0;
    Require(GetSaleNum(&next), ExitStatus::not_read, "the sale counter could not be read");
    const int last = std::min(range.to.value_or(next - 1), next - 1);
    ProgressBar bar(streams.err, streams.err_terminal, "reading the control tape",
                    std::max(last - range.from + 1, 0));
    for (int number = range.from; number <= last; ++number) {
        records.push_back(ReadRecord(number));
        bar.Advance();
    }
}

}  // namespace

ExitStatus RunTape(const Address& address, const TapeRange& range, TapeFormat format,
                   Streams& streams) {
    std::vector<Record> records;
    try {
        ReadRecords(address, range, records, streams);
        Write(records, format, nullptr, streams.out);
        return ExitStatus::done;
    } catch (const RegisterFailure& failure) {
        if (!records.empty()) {
            Write(records, format, &failure, streams.out);
        }
        return Report(failure, records.empty() && format == TapeFormat::json, streams);
    }
}

}  // namespace kkm
