#include "kkm/service_commands.h"

#include <functional>

#include "VeskTarvoM5/VeskTarvoM5.h"
#include "kkm/encoding.h"
#include "kkm/figures.h"
#include "kkm/report.h"

namespace kkm {
namespace {

constexpr std::size_t kLongestText = 16;
constexpr int kLastWithLockAsState = 302;

ExitStatus Done(const std::string& what, bool as_json, Streams& streams) {
    streams.out << (as_json ? FiguresAsJson({TextFigure("done", "", what)}) : what + "\n")
                << std::flush;
    return ExitStatus::done;
}

// The driver cancels what is open when it gets ready for a check. A reset alone would have the
// register print a check that it is closing.
int CancelWhatIsOpen() {
    if (CheckClose() != 0) {
        return 1;
    }
    if (GetErrorCode() != echRegKass) {
        return 0;
    }
    // A lock is in the way. By now the check behind it is out of its closing, and the reset ends no
    // more than the lock.
    return CheckCancel() != 0 && CheckClose() != 0 ? 1 : 0;
}

// Connects, does it, and says so.
ExitStatus RunService(const Address& address, const std::function<int(Connection&)>& serve,
                      const std::string& done, bool as_json, Streams& streams) {
    try {
        Connection connection(address);
        Require(serve(connection), ExitStatus::refused, "the register did not do it");
        return Done(done, as_json, streams);
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
        address, [&](Connection&) { return KKMPrintStr(line.bytes.data()); },
        "the line is sent to the printer", as_json, streams);
}

ExitStatus RunFeed(const Address& address, int times, bool as_json, Streams& streams) {
    return RunService(
        address, [times](Connection&) { return Feed(times); }, "the paper is fed", as_json,
        streams);
}

ExitStatus RunLock(const Address& address, bool as_json, Streams& streams) {
    const auto lock = [](Connection& connection) {
        // Here the lock is a state, and the reset of the leaving would end it.
        if (Firmware() <= kLastWithLockAsState) {
            connection.Leave(Connection::Leaving::as_it_is);
        }
        return Lock();
    };
    return RunService(address, lock, "the keyboard is locked", as_json, streams);
}

ExitStatus RunUnlock(const Address& address, bool as_json, Streams& streams) {
    return RunService(
        address, [](Connection&) { return UnLock(); }, "the keyboard is unlocked", as_json,
        streams);
}

ExitStatus RunDisplayClear(const Address& address, bool as_json, Streams& streams) {
    return RunService(
        address, [](Connection&) { return ClearIndicator(); }, "the display is cleared", as_json,
        streams);
}

ExitStatus RunCancel(const Address& address, bool as_json, Streams& streams) {
    try {
        Connection connection(address, Connection::Leaving::as_it_is);
        Require(CancelWhatIsOpen(), ExitStatus::refused,
                "what is open could not be cancelled and is left as it is");
        connection.Leave(Connection::Leaving::reset);
        return Done("nothing is open; the register's state is reset", as_json, streams);
    } catch (const RegisterFailure& failure) {
        return Report(failure, as_json, streams);
    }
}

}  // namespace kkm
