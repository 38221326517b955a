#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>

#include "kkm/encoding.h"
#include "kkm/register_state.h"

namespace kkm {
namespace {

constexpr double kThousandth = 0.001;
constexpr double kHundredth = 0.01;

// The bytes of an answer; what the register left out reads as 0.
class Data {
  public:
    explicit Data(const Bytes& bytes) : bytes_(bytes) {}

    int Byte(std::size_t at) const { return at < bytes_.size() ? bytes_[at] : 0; }
    bool Flag(std::size_t at) const { return Byte(at) != 0; }
    // As the driver reads five bytes: only three of them count, at odd places.
    double CardAmount(std::size_t at) const {
        return Byte(at + 2) * 16777216.0 + Byte(at + 3) * 256.0 + Byte(at + 4);
    }
    std::int64_t Number(std::size_t at, std::size_t count) const {
        std::int64_t value = 0;
        for (std::size_t i = 0; i < count; ++i) {
            value = value * 256 + Byte(at + i);
        }
        return value;
    }
    // The bytes from `at` on as UTF-8: the register writes code page 866.
    std::string Text(std::size_t at, std::size_t count) const;

  private:
    const Bytes& bytes_;
};

std::string Data::Text(std::size_t at, std::size_t count) const {
    const std::size_t from = std::min(at, bytes_.size());
    const std::size_t to = from + std::min(count, bytes_.size() - from);
    const auto begin = bytes_.begin();
    return FromRegisterText(
        std::string(begin + static_cast<long>(from), begin + static_cast<long>(to)));
}

// What the states share, by name. Every figure has one spelling in JSON and one for people.
class List {
  public:
    explicit List(const Bytes& bytes) : data_(bytes) {}

    std::vector<Figure> Take() { return std::move(figures_); }
    const Data& data() const { return data_; }

    List& Number(const std::string& key, const std::string& label, std::int64_t value) {
        figures_.push_back({key, label, std::to_string(value), value});
        return *this;
    }
    List& Document(std::size_t at) { return Number("document", "document", data_.Number(at, 2)); }
    List& Position(std::size_t at, int more = 0) {
        return Number("position", "position", data_.Number(at, 2) + more);
    }
    List& Sale(std::size_t at, int more = 0) {
        return Number("sale", "sale", data_.Byte(at) + more);
    }
    List& Department(std::size_t at) { return Number("department", "department", data_.Byte(at)); }
    List& Goods(std::size_t at) { return Number("goods_code", "goods code", data_.Number(at, 2)); }
    List& Lines(std::size_t at) { return Number("lines", "lines", data_.Byte(at)); }
    List& Kind(std::size_t at) { return Number("kind", "kind", data_.Byte(at)); }
    List& Percent(std::size_t at) { return Number("percent", "per cent", data_.Byte(at)); }
    List& SignedPercent(std::size_t sign, std::size_t at) {
        return Number("percent", "per cent", data_.Flag(sign) ? data_.Byte(at) : -data_.Byte(at));
    }
    List& Flag(const std::string& key, bool value) {
        figures_.push_back(FlagFigure(key, key, value, "yes", "no"));
        return *this;
    }
    List& Marked(std::size_t at) { return Flag("marked", data_.Flag(at)); }
    List& Money(const std::string& key, const std::string& label, double kopecks) {
        figures_.push_back(MoneyFigure(key, label, kopecks * kHundredth));
        return *this;
    }
    List& Quantity(std::size_t at, bool weighed) {
        const std::int64_t count = data_.Number(at, 2);
        if (weighed) {
            const double kilograms = static_cast<double>(count) * kThousandth;
            std::string text = std::to_string(count % 1000);
            text.insert(0, 3 - text.size(), '0');
            text = std::to_string(count / 1000) + "." + text + " kg";
            figures_.push_back({"quantity", "quantity", text, kilograms});
            return *this;
        }
        return Number("quantity", "quantity", count);
    }
    // While goods are being entered no quantity means one piece.
    List& EnteredQuantity(std::size_t at, bool weighed) {
        return data_.Number(at, 2) == 0 ? Number("quantity", "quantity", 1) : Quantity(at, weighed);
    }
    List& Text(const std::string& key, const std::string& label, std::size_t at,
               std::size_t count) {
        figures_.push_back(TextFigure(key, label, data_.Text(at, count)));
        return *this;
    }

  private:
    Data data_;
    std::vector<Figure> figures_;
};

constexpr std::size_t kToTheEnd = static_cast<std::size_t>(-1) / 2;

void AddLine(List& list, int more_sales) {
    list.Document(0).Position(2, 1).Sale(4, more_sales).Department(5);
    list.Number("attribute", "attribute", list.data().Byte(6)).Percent(7).Goods(8);
    list.Quantity(11, list.data().Flag(10)).Marked(13);
    list.Money("price", "price", static_cast<double>(list.data().Number(14, 3)))
        .Text("name", "name", 17, kToTheEnd);
}

double RoundHalfUp(double value) {
    return std::floor(value + 0.5);
}

// The driver's sum of a line that was added; its factor for weights is of single precision.
double LineSum(const Data& data) {
    const double factor = data.Flag(10) ? static_cast<double>(0.001F) : 1.0;
    const double quantity = static_cast<double>(data.Number(11, 2)) * factor;
    const double sum = RoundHalfUp(static_cast<double>(data.Number(14, 3)) * quantity);
    return sum + RoundHalfUp(sum * data.Byte(7) * 0.01);
}

void AddFreeLine(List& list) {
    list.Document(0).Position(2).Sale(4).Marked(5).Department(6);
    list.Number("attribute", "attribute", list.data().Byte(7)).Percent(8);
    list.Quantity(10, list.data().Flag(9));
    list.Money("price", "price", static_cast<double>(list.data().Number(12, 3)));
    list.Money("sum", "sum", static_cast<double>(list.data().Number(15, 3)));
}

void AddCheckOut(List& list) {
    list.Document(0).Position(2, 1).Lines(4).Kind(5);
    list.Number("section", "section", list.data().Byte(6) + 1);
    list.Money("amount", "amount", static_cast<double>(list.data().Number(8, 4)))
        .SignedPercent(12, 13);
    const std::int64_t discount = list.data().Number(15, 4);
    list.Money("discount", "discount",
               static_cast<double>(list.data().Flag(12) ? discount : -discount));
}

// A register that asks for a check does not send these along: the driver asks for them, too.
void AddPlaceOfSale(const RegisterLook& look, std::vector<Figure>& figures) {
    if (look.counters) {
        figures.push_back(NumberFigure("document", "document", look.counters->tape));
        figures.push_back(NumberFigure("position", "position", look.counters->checks + 1));
    }
    if (look.open_lines) {
        figures.push_back(NumberFigure("sale", "sale", *look.open_lines));
    }
    if (look.section) {
        figures.push_back(NumberFigure("section", "section", *look.section));
    }
}

}  // namespace

const std::vector<StateName>& States() {
    static const std::vector<StateName> states = {
        {0xA0, "ks_none", "idle"},
        {0xA1, "ks_salecode", "asks for a check, by a goods code"},
        {0xA2, "ks_saleadd", "has added a line"},
        {0xA3, "ks_salebarcode", "asks for a check, by a bar code"},
        {0xA7, "ks_salenoadd", "has refused a line"},
        {0xC0, "ks_kkmgo", "ready"},
        {0xC4, "ks_saledel", "has deleted a line"},
        {0xC5, "ks_checkbufclear", "has cleared the check"},
        {0xC6, "ks_salefree", "the cashier is entering a line"},
        {0xC8, "ks_checkout", "is closing a check"},
        {0xC9, "ks_discount", "is taking a discount"},
        {0xCA, "ks_discountcard", "holds a discount card"},
        {0xCB, "ks_kkmon", "has been switched on"},
        {0xCC, "ks_smenaclose", "the shift is closed"},
        {0xCD, "ks_weight", "waits for a weight"},
        {0xCE, "ks_keylock", "the keyboard is locked"},
    };
    return states;
}

const StateName* StateOfCode(int code) {
    const auto& all = States();
    const auto found = std::find_if(all.begin(), all.end(),
                                    [code](const StateName& state) { return state.code == code; });
    return found == all.end() ? nullptr : &*found;
}

std::vector<Figure> FiguresOfState(int code, const Bytes& bytes) {
    List list(bytes);
    const Data& data = list.data();
    switch (code) {
        case kSaleCode:
            list.Goods(0).Department(2).EnteredQuantity(4, data.Flag(3)).Marked(6);
            break;
        case 0xA2:
            AddLine(list, 1);
            list.Money("sum", "sum", LineSum(data));
            break;
        case kSaleBarcode:
            list.Department(0).EnteredQuantity(2, data.Flag(1)).Marked(4);
            list.Text("barcode", "bar code", 6, static_cast<std::size_t>(data.Byte(5)));
            break;
        case 0xA7:
            list.Document(0).Position(2).Sale(4);
            break;
        case 0xC4:
            AddLine(list, 0);
            break;
        case 0xC5:
            list.Document(0).Position(2, 1).Lines(4).Marked(5);
            break;
        case 0xC6:
            AddFreeLine(list);
            break;
        case 0xC8:
            AddCheckOut(list);
            break;
        case 0xC9:
            list.Document(0).Position(2).Lines(4).Kind(5);
            list.Money("amount", "amount", static_cast<double>(data.Number(7, 4)))
                .SignedPercent(11, 12);
            break;
        case 0xCA:
            list.Document(0).Position(2).Lines(4).Kind(5);
            list.Money("amount", "amount", data.CardAmount(6));
            list.Text("card", "card", 12, static_cast<std::size_t>(data.Byte(11)));
            break;
        case 0xCB:
            list.Document(0).Position(2);
            list.Number("section", "section", data.Byte(4) + 1);
            break;
        case 0xCC:
            list.Document(0);
            break;
        case 0xCD:
            list.Flag("weighed", std::any_of(bytes.begin(), bytes.end(),
                                             [](std::uint8_t byte) { return byte != 0; }));
            break;
        default:
            break;
    }
    return list.Take();
}

std::string StateText(int code) {
    char number[8];
    std::snprintf(number, sizeof number, "0x%02X", static_cast<unsigned>(code));
    const StateName* const known = StateOfCode(code);
    return std::string(number) + " " +
           (known != nullptr ? std::string(known->name) + ": " + known->meaning : "unknown");
}

std::vector<Figure> StateAsFigures(const RegisterLook& look) {
    const RegisterState& state = look.state;
    const StateName* const known = StateOfCode(state.code);
    std::vector<Figure> figures = {
        {"state", "state", StateText(state.code), known != nullptr ? known->name : "unknown"},
        {"state_code", "", "", state.code},
        NumberFigure("baud", "baud", state.baud),
    };
    auto of_state = FiguresOfState(state.code, state.data);
    if (state.code == kSaleCode || state.code == kSaleBarcode) {
        AddPlaceOfSale(look, of_state);
    }
    for (Figure& figure : of_state) {
        figure.key = "state_" + figure.key;
        figure.label = "  " + figure.label;
        figures.push_back(std::move(figure));
    }
    return figures;
}

}  // namespace kkm
