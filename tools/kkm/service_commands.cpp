#include "kkm/service_commands.h"

#include <functional>

#include "VeskTarvoM5/VeskTarvoM5.h"
#include "kkm/encoding.h"
#include "kkm/figures.h"
#include "kkm/report.h"

namespace kkm {
namespace {

constexpr std::size_t kLongestText = 16;

// Connects, does it, and says so.
ExitStatus RunService(const Address& address, const std::function<int()>& serve,
                      const std::string& done, bool as_json, Streams& streams) {
    try {
        const Connection connection(address);
        Require(serve(), ExitStatus::refused, "the register did not do it");
        streams.out << (as_json ? FiguresAsJson({TextFigure("done", "", done)}) : done + "\n")
                    << std::flush;
        return ExitStatus::done;
    } catch (const RegisterFailure& failure) {
        return Report(failure, as_json, streams);
    }
}

}  // namespace

ExitStatus RunText(const Address& address, const std::string& text, bool as_json,
                   Streams& streams) {
    RegisterText line = ToRegisterText(text);
    if (!line.lost.empty()) {
        streams.err << "kkm: the register lacks and prints as '?':";
        for (const std::string& letter : line.lost) {
            streams.err << ' ' << letter;
        }
        streams.err << std::endl;
    }
    if (line.bytes.size() > kLongestText) {
        streams.err << "kkm: only " << kLongestText << " letters are printed: "
                    << FromRegisterText(line.bytes.substr(0, kLongestText)) << std::endl;
    }
    return RunService(
        address, [&] { return KKMPrintStr(line.bytes.data()); }, "the line is printed", as_json,
        streams);
}

ExitStatus RunFeed(const Address& address, int times, bool as_json, Streams& streams) {
    return RunService(
        address, [times] { return Feed(times); }, "the paper is fed", as_json, streams);
}

ExitStatus RunLock(const Address& address, bool as_json, Streams& streams) {
    return RunService(address, Lock, "the keyboard is locked", as_json, streams);
}

ExitStatus RunUnlock(const Address& address, bool as_json, Streams& streams) {
    return RunService(address, UnLock, "the keyboard is unlocked", as_json, streams);
}

ExitStatus RunDisplayClear(const Address& address, bool as_json, Streams& streams) {
    return RunService(address, ClearIndicator, "the display is cleared", as_json, streams);
}

ExitStatus RunCancel(const Address& address, bool as_json, Streams& streams) {
    return RunService(address, CheckCancel, "the register's state is reset", as_json, streams);
}

}  // namespace kkm
