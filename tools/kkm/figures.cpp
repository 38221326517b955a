#include "kkm/figures.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <sstream>

namespace kkm {

std::string MoneyText(double value) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(2) << value;
    return text.str();
}

Figure TextFigure(const std::string& key, const std::string& label, const std::string& value) {
    return {key, label, value, value};
}

Figure NumberFigure(const std::string& key, const std::string& label, int value) {
    return {key, label, std::to_string(value), value};
}

Figure MoneyFigure(const std::string& key, const std::string& label, double value) {
    return {key, label, MoneyText(value), std::round(value * 100) / 100};
}

Figure FlagFigure(const std::string& key, const std::string& label, bool value,
                  const std::string& yes, const std::string& no) {
    return {key, label, value ? yes : no, value};
}

std::string FiguresAsText(const std::vector<Figure>& figures) {
    std::size_t width = 0;
    for (const Figure& figure : figures) {
        width = std::max(width, figure.label.size());
    }
    std::string text;
    for (const Figure& figure : figures) {
        if (figure.label.empty()) {
            continue;
        }
        text += figure.label + std::string(width - figure.label.size() + 2, ' ') + figure.text;
        text += '\n';
    }
    return text;
}

std::string FiguresAsJson(const std::vector<Figure>& figures) {
    auto object = nlohmann::ordered_json::object();
    for (const Figure& figure : figures) {
        object[figure.key] = figure.value;
    }
    return object.dump(2) + "\n";
}

}  // namespace kkm
