// Figures of the register, for people and for programs.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace kkm {

struct Figure {
    std::string key;    // name in JSON
    std::string label;  // name for people; empty: only programs see it
    std::string text;   // value for people
    nlohmann::ordered_json value;
};

Figure TextFigure(const std::string& key, const std::string& label, const std::string& value);
Figure NumberFigure(const std::string& key, const std::string& label, int value);
// Currency units, rounded to hundredths.
Figure MoneyFigure(const std::string& key, const std::string& label, double value);
// `yes` and `no` are what people read; programs read true or false.
Figure FlagFigure(const std::string& key, const std::string& label, bool value,
                  const std::string& yes, const std::string& no);

// One line for each, labels and values in columns.
std::string FiguresAsText(const std::vector<Figure>& figures);
// One object, the keys in the order given.
std::string FiguresAsJson(const std::vector<Figure>& figures);

// 1234.5 gives "1234.50".
std::string MoneyText(double value);

}  // namespace kkm
