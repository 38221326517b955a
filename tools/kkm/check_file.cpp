#include "kkm/check_file.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>
#include <system_error>

namespace kkm {
namespace {

using Json = nlohmann::json;

constexpr double kHighestCash = 42949672.95;  // 2^32 - 1 kopecks

[[noreturn]] void Refuse(const std::string& place, const std::string& what) {
    throw CheckFileError(place.empty() ? what : place + ": " + what);
}

std::string Join(const std::string& place, const std::string& field) {
    return place.empty() ? field : place + ", " + field;
}

// The parser's words behind its own "[json...] ": "file line 3, column 8: ..." where it has a
// place.
std::string Words(const Json::exception& e) {
    static const std::string place = "parse error at ";
    const std::string what = e.what();
    const std::string words = what.substr(what.find("] ") + 2);
    return words.compare(0, place.size(), place) == 0 ? "file " + words.substr(place.size())
                                                      : words;
}

// Remembers the field names of each open object: a name given twice would silently win.
class DoubledFields {
  public:
    bool operator()(int /*depth*/, Json::parse_event_t event, Json& parsed) {
        if (event == Json::parse_event_t::object_start) {
            open_.emplace_back();
        } else if (event == Json::parse_event_t::object_end) {
            open_.pop_back();
        } else if (event == Json::parse_event_t::key) {
            const auto name = parsed.get<std::string>();
            if (!open_.back().insert(name).second) {
                Refuse("", "\"" + name + "\" is given twice");
            }
        }
        return true;
    }

  private:
    std::vector<std::set<std::string>> open_;
};

Json ParseJson(const std::string& text) {
    try {
        return Json::parse(text, DoubledFields());
    } catch (const Json::exception& e) {
        Refuse("", Words(e));
    }
}

void RequireObject(const Json& json, const std::string& place,
                   std::initializer_list<const char*> fields) {
    if (!json.is_object()) {
        Refuse(place, "must be an object {...}, not " + std::string(json.type_name()));
    }
    for (const auto& item : json.items()) {
        const bool known = std::any_of(fields.begin(), fields.end(),
                                       [&](const char* field) { return item.key() == field; });
        if (!known) {
            std::string names;
            for (const char* field : fields) {
                names += names.empty() ? field : std::string(", ") + field;
            }
            Refuse(Join(place, item.key()), "no such field (there are: " + names + ")");
        }
    }
}

const Json& Field(const Json& object, const std::string& place, const char* name) {
    const auto found = object.find(name);
    if (found == object.end()) {
        Refuse(Join(place, name), "is missing");
    }
    return *found;
}

double Number(const Json& value, const std::string& place) {
    if (!value.is_number()) {
        Refuse(place, "must be a number, not " + std::string(value.type_name()));
    }
    return value.get<double>();
}

int WholeNumber(const Json& value, const std::string& place) {
    const double number = Number(value, place);
    if (!value.is_number_integer() || number < INT_MIN || number > INT_MAX) {
        Refuse(place, "must be a whole number, not " + value.dump());
    }
    return value.get<int>();
}

std::string Name(const Json& value, const std::string& place) {
    if (!value.is_string()) {
        Refuse(place, "must be a text, not " + std::string(value.type_name()));
    }
    auto name = value.get<std::string>();
    if (name.empty()) {
        Refuse(place, "must not be empty");
    }
    // A control character would end the text early or drive the printer.
    const bool printable = std::none_of(name.begin(), name.end(), [](char c) {
        return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
    });
    if (!printable) {
        Refuse(place, "must not hold control characters");
    }
    return name;
}

CheckLine Line(const Json& json, const std::string& place) {
    RequireObject(json, place, {"name", "price", "quantity", "section"});
    CheckLine line;
    line.name = Name(Field(json, place, "name"), Join(place, "name"));
    line.price = Number(Field(json, place, "price"), Join(place, "price"));
    if (json.contains("quantity")) {
        line.quantity = Number(json["quantity"], Join(place, "quantity"));
        if (!(line.quantity > 0)) {
            Refuse(Join(place, "quantity"), "must be above 0");
        }
    }
    if (json.contains("section")) {
        line.section = WholeNumber(json["section"], Join(place, "section"));
    }
    return line;
}

CheckMode Mode(const Json& value) {
    if (value == "sale") {
        return CheckMode::sale;
    }
    if (value == "return") {
        return CheckMode::refund;
    }
    if (value == "credit") {
        return CheckMode::credit;
    }
    Refuse("mode", R"(must be "sale", "return" or "credit", not )" + value.dump());
}

std::string ReadAll(std::istream& from) {
    std::ostringstream text;
    text << from.rdbuf();
    if (text.fail()) {
        Refuse("", "is empty or cannot be read");
    }
    return text.str();
}

}  // namespace

CheckFile ParseCheck(const std::string& json) {
    const Json root = ParseJson(json);
    RequireObject(root, "", {"lines", "mode", "discount", "cash"});
    CheckFile check;
    const Json& lines = Field(root, "", "lines");
    if (!lines.is_array() || lines.empty()) {
        Refuse("lines", "must be a list [...] of at least one line");
    }
    for (std::size_t i = 0; i < lines.size(); ++i) {
        check.lines.push_back(Line(lines[i], "sale line " + std::to_string(i + 1)));
    }
    if (root.contains("mode")) {
        check.mode = Mode(root["mode"]);
    }
    if (root.contains("discount")) {
        check.discount = WholeNumber(root["discount"], "discount");
    }
    if (root.contains("cash")) {
        check.cash = Number(root["cash"], "cash");
        // The library takes any number here and would send what is left of it.
        if (!(*check.cash >= 0 && *check.cash <= kHighestCash)) {
            Refuse("cash", "must be from 0 to 42949672.95");
        }
    }
    return check;
}

CheckFile ReadCheck(const std::string& path, std::istream& standard_input) {
    try {
        if (path == "-") {
            return ParseCheck(ReadAll(standard_input));
        }
        std::ifstream file(path, std::ios::binary);
        if (!file) {
            Refuse("", std::generic_category().message(errno));
        }
        return ParseCheck(ReadAll(file));
    } catch (const CheckFileError& e) {
        Refuse(path == "-" ? "standard input" : path, e.what());
    }
}

}  // namespace kkm
