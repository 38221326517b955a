#include "kkm/trace_story.h"

#include <cstdlib>
#include <string_view>

#include "VeskTarvoM5/VeskTarvoM5.h"
#include "kkm/encoding.h"

namespace kkm {
namespace {

constexpr double kKopeck = 0.01;

class Teller {
  public:
    std::vector<StoryEvent> Tell(std::string_view trace);

  private:
    // What a text of the driver's means. `rest` is what follows it.
    using Handler = void (Teller::*)(std::string_view rest);
    struct Marker {
        std::string_view text;
        Handler handle;
        const char* say;  // for the handlers that only note something
        int code;
    };
    static std::vector<Marker> MarkersBeforeTheClosing();
    static std::vector<Marker> MarkersOfTheClosing();
    static const std::vector<Marker>& Markers();
    static const Marker* MarkerAt(std::string_view trace);

    StoryCheck& Check();
    void EndCheck(StoryOutcome outcome);
    void AddEvent(StoryEvent::Kind kind, const std::string& text) {
        EndCheck(StoryOutcome::unfinished);
        events_.push_back({kind, text, {}});
    }

    void Connect(std::string_view);
    void Firmware(std::string_view rest);
    void NotAt9600(std::string_view) { connection_ += ", nobody at 9600 baud"; }
    void Connected(std::string_view);
    void Disconnected(std::string_view);
    void Asked(std::string_view) { Check(); }
    void SaleLine(std::string_view rest);
    void OnlyAName(std::string_view) {}
    void LineTaken(std::string_view);
    void Discount(std::string_view rest);
    void Type(std::string_view rest);
    void Cash(std::string_view rest);
    void Printed(std::string_view) { EndCheck(StoryOutcome::printed); }
    void Interface(std::string_view);
    void UnknownError(std::string_view);
    void Counters(std::string_view rest);
    void WarnOfLine(std::string_view rest);
    void Repeated(std::string_view rest);
    void Trouble(std::string_view);
    void Reason(std::string_view);
    void BehindTheEnd(std::string_view);

    void LeaveConnecting();

    std::vector<StoryEvent> events_;
    std::optional<StoryCheck> check_;
    bool closing_ = false;     // the register was told to close the check
    bool connecting_ = false;  // until it is known how it ended
    std::string connection_;
    const Marker* now_ = nullptr;
};

std::string_view LineOf(std::string_view text) {
    return text.substr(0, text.find('\n'));
}

// The number behind the words, 0 without one.
long NumberIn(std::string_view text) {
    const auto at = text.find_first_of("-0123456789");
    return at == std::string_view::npos ? 0 : std::atol(std::string(text.substr(at)).c_str());
}

// What stands between two words of a line.
std::string_view Between(std::string_view text, std::string_view from, std::string_view to) {
    const auto begin = text.find(from);
    if (begin == std::string_view::npos) {
        return {};
    }
    text = text.substr(begin + from.size());
    return text.substr(0, text.find(to));
}

std::vector<Teller::Marker> Teller::MarkersBeforeTheClosing() {
    using T = Teller;
    return {
        {"Connect -  Linux", &T::Connect, "", 0},
        {"TTarvoVesk::Connect: getKKMVersion: ", &T::Firmware, "", 0},
        {"TTarvoVesk::Connect: error getKKMVersion", &T::NotAt9600, "", 0},
        {"Connect - OK", &T::Connected, "", 0},
        {"Disconnect - OK", &T::Disconnected, "", 0},
        {"SaleNum > 0", &T::Trouble, "an unfinished check was found and cancelled", 0},
        {"Info:query ks_salecode", &T::Asked, "", 0},
        {"Info: query ks_salebarcode", &T::Asked, "", 0},
        {"Info: query ks_saleadd", &T::Trouble, "the cashier's open entry was dropped", 0},
        {"Info: query ks_salefree", &T::Trouble, "the cashier's open entry was dropped", 0},
        {"Warning:Check is opened - Exit", &T::Trouble,
         "a check was open at the register; the driver waited", 0},
        {"Warning: echRegKass - Exit", &T::Reason, "the register takes no check in its state",
         echRegKass},
        {"Warning: echCancelCheck - Exit", &T::Reason, "the cashier cancelled it", echCancelCheck},
        {"Info: TrySendSale ;title = ", &T::SaleLine, "", 0},
        {"Info: TrySendSaleTitle ", &T::OnlyAName, "", 0},
        {"Info: line number   ", &T::OnlyAName, "", 0},
        {"Info:TrySendSale-ok", &T::LineTaken, "", 0},
        {"ReadSaleNumber -  error: ???", &T::Trouble, "the number of lines could not be read", 0},
        {"Error: ks_saleadd != status.command", &T::Trouble,
         "the register did not show a line as added", 0},
        {"Error: ???", &T::Trouble, "an exchange failed", 0},
        {"Error: e.m_code == errMoney", &T::Reason, "the register refused the price or sum",
         echPrice},
        {"Warning: TryReadSaleNumber ", &T::Repeated, "reading the number of lines", 0},
        {"Warning: TrySendDiscount try ", &T::Repeated, "the discount", 0},
        {"Warning: TrySendCheckType try ", &T::Repeated, "the closing", 0},
        {"Warning: TrySendCheckCash try", &T::Repeated, "the cash", 0},
        {"Warning: TryEnableCheckOut ", &T::Repeated, "the printing", 0},
        {"Warning: ", &T::WarnOfLine, "", 0},
        {"Error: TryReadSaleNumber (count)", &T::Reason,
         "the number of lines could not be read in 20 attempts", echDevice},
        {"Error: TrySendSale in  send ", &T::Reason, "a line was not taken in 20 attempts",
         echDevice},
        {"Error: TrySendSaleTitle  try ", &T::Reason, "a name was not taken in 20 attempts",
         echDevice},
    };
}

std::vector<Teller::Marker> Teller::MarkersOfTheClosing() {
    using T = Teller;
    return {
        {"Info: TrySendDiscount = ", &T::Discount, "", 0},
        {"Error: TrySendDiscount try ", &T::Reason, "the discount was not taken in 20 attempts",
         echDevice},
        {"Info: TrySendCheckType type check = ", &T::Type, "", 0},
        {"Error: TrySendCheckType  try", &T::Reason, "it was not closed in 20 attempts", echDevice},
        {"Error:  echNoCash", &T::Reason, "refused for want of money", echNoCash},
        {"Info: TrySendCheckCash checkCash = ", &T::Cash, "", 0},
        {"TrySendCheckCash: error", &T::Trouble, "an exchange failed at the cash", 0},
        {"Error: TrySendCheckCash try", &T::Reason, "the cash was not taken in 20 attempts",
         echDevice},
        {"Error: !waitKKMStatus(ks_checkout)", &T::Trouble,
         "the register did not reach its closing", 0},
        {"Error: TryEnableCheckOut - !waitKKMStatus(ks_checkout)", &T::Trouble,
         "the register had not begun to print", 0},
        {"Info: TestCheckPrint - ok", &T::Printed, "", 0},
        {"Error: TestCheckPrint - !readed", &T::Reason, "the counters could not be read for 30 s",
         echDevice},
        {"Error:  TestCheckPrint  (", &T::Counters, "", 0},
        {"Error: TryReadError  try", &T::Reason, "the register's error could not be read",
         echDevice},
        {"Error: TestCheckPrint iPaperAbsent", &T::Reason, "no paper; the check is still open",
         echPaperAbsent},
        {"Error: TestCheckPrint <> iPaperAbsent", &T::Reason,
         "the counters do not show it as printed", echPrintTest},
        {"Error TTarvoVesk::execute TryPrintDoubleCheck", &T::BehindTheEnd,
         "the copies were given up", 0},
        {"Error TTarvoVesk::execute unlockKey", &T::BehindTheEnd,
         "the keyboard could not be unlocked", 0},
        {"Error Interface", &T::Interface, "", 0},
        {"Error: unknown error in print check", &T::UnknownError, "", 0},
        {"Error: unlockKey  Error", &T::BehindTheEnd, "the keyboard could not be unlocked", 0},
        {"Error: ClearCheck", &T::BehindTheEnd, "the check could not be cancelled", 0},
    };
}

const std::vector<Teller::Marker>& Teller::Markers() {
    static const std::vector<Marker> all = [] {
        std::vector<Marker> markers = MarkersBeforeTheClosing();
        const std::vector<Marker> more = MarkersOfTheClosing();
        markers.insert(markers.end(), more.begin(), more.end());
        return markers;
    }();
    return all;
}

// The longest that begins here.
const Teller::Marker* Teller::MarkerAt(std::string_view trace) {
    static const std::string_view first_letters = "CTDSIWRE";
    if (first_letters.find(trace.front()) == std::string_view::npos) {
        return nullptr;
    }
    const Marker* best = nullptr;
    for (const Marker& marker : Markers()) {
        if (trace.substr(0, marker.text.size()) == marker.text &&
            (best == nullptr || marker.text.size() > best->text.size())) {
            best = &marker;
        }
    }
    return best;
}

std::vector<StoryEvent> Teller::Tell(std::string_view trace) {
    while (!trace.empty()) {
        now_ = MarkerAt(trace);
        if (now_ == nullptr) {
            trace.remove_prefix(1);
            continue;
        }
        trace.remove_prefix(now_->text.size());
        (this->*now_->handle)(trace);
        if (now_->handle == &Teller::SaleLine || now_->handle == &Teller::OnlyAName) {
            // A name may look like anything.
            trace.remove_prefix(LineOf(trace).size());
        }
    }
    LeaveConnecting();
    EndCheck(StoryOutcome::unfinished);
    return std::move(events_);
}

StoryCheck& Teller::Check() {
    if (!check_) {
        check_.emplace();
        closing_ = false;
    }
    return *check_;
}

void Teller::EndCheck(StoryOutcome outcome) {
    if (!check_) {
        return;
    }
    check_->outcome = outcome;
    events_.push_back({StoryEvent::Kind::check, "", std::move(*check_)});
    check_.reset();
}

void Teller::LeaveConnecting() {
    if (connecting_) {
        connecting_ = false;
        AddEvent(StoryEvent::Kind::not_connected, connection_);
    }
}

void Teller::Connect(std::string_view) {
    LeaveConnecting();
    EndCheck(StoryOutcome::unfinished);
    connecting_ = true;
    connection_.clear();
}

void Teller::Firmware(std::string_view rest) {
    connection_ += ", firmware " + std::to_string(NumberIn(LineOf(rest)));
}

void Teller::Connected(std::string_view) {
    connecting_ = false;
    AddEvent(StoryEvent::Kind::connected, connection_);
}

void Teller::Disconnected(std::string_view) {
    LeaveConnecting();
    AddEvent(StoryEvent::Kind::disconnected, "");
}

void Teller::SaleLine(std::string_view rest) {
    const auto line = LineOf(rest);
    StoryLine told;
    told.name = FromRegisterText(std::string(line.substr(0, line.find(" ;barcode = "))));
    told.quantity = std::string(Between(line, "; count = ", ";"));
    told.price = static_cast<double>(NumberIn(Between(line, "; price = ", ";"))) * kKopeck;
    told.section = static_cast<int>(NumberIn(Between(line, "; section = ", ";")));
    Check().lines.push_back(told);
}

void Teller::LineTaken(std::string_view) {
    if (check_ && !check_->lines.empty()) {
        check_->lines.back().taken = true;
    }
}

void Teller::Discount(std::string_view rest) {
    Check().discount = static_cast<int>(NumberIn(LineOf(rest)));
}

void Teller::Type(std::string_view rest) {
    const long type = NumberIn(LineOf(rest));
    Check().type = type == 0 ? "sale" : type == 1 ? "return" : type == 2 ? "credit" : "";
    closing_ = true;
}

void Teller::Cash(std::string_view rest) {
    const long kopecks = NumberIn(LineOf(rest));
    if (kopecks != 0) {
        Check().cash = static_cast<double>(kopecks) * kKopeck;
    }
}

// Before the closing nothing can have been printed; behind it only some codes are proof.
void Teller::Interface(std::string_view) {
    StoryCheck& check = Check();
    const bool doubtful =
        check.error == 0 || check.error == echDevice || check.error == echPrintTest;
    EndCheck(closing_ && doubtful ? StoryOutcome::unknown : StoryOutcome::failed);
}

void Teller::UnknownError(std::string_view rest) {
    StoryCheck& check = Check();
    check.error = echDevice;
    check.reason = "an exchange failed where nothing repeats it";
    Interface(rest);
}

void Teller::Counters(std::string_view rest) {
    Check().troubles.push_back("the counters differ from what they should be: " +
                               std::string(LineOf(rest).substr(0, LineOf(rest).find(')'))));
}

// "3try send for sale 2" or "2 lcount 4 sale number 1"
void Teller::WarnOfLine(std::string_view rest) {
    const auto line = LineOf(rest);
    const std::string attempts = std::to_string(NumberIn(line));
    for (const auto& [words, what] :
         {std::pair<std::string_view, const char*>{"try send for sale ", "line "},
          {" sale number ", "the name of line "}}) {
        const auto at = line.find(words);
        if (at != std::string_view::npos) {
            Check().repeated.push_back(what +
                                       std::to_string(NumberIn(line.substr(at + words.size()))) +
                                       ": " + attempts + " attempts");
            return;
        }
    }
}

void Teller::Repeated(std::string_view rest) {
    Check().repeated.push_back(std::string(now_->say) + ": " +
                               std::to_string(NumberIn(LineOf(rest))) + " attempts");
}

void Teller::Trouble(std::string_view) {
    Check().troubles.emplace_back(now_->say);
}

void Teller::Reason(std::string_view) {
    Check().reason = now_->say;
    Check().error = now_->code;
}

void Teller::BehindTheEnd(std::string_view) {
    if (!check_ && !events_.empty() && events_.back().kind == StoryEvent::Kind::check) {
        events_.back().check.troubles.emplace_back(now_->say);
    }
}

}  // namespace

std::vector<StoryEvent> TellTrace(const std::string& trace) {
    return Teller().Tell(trace);
}

}  // namespace kkm
