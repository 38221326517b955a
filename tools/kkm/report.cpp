#include "kkm/report.h"

#include <poll.h>
#include <unistd.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "VeskTarvoM5/VeskTarvoM5.h"

namespace kkm {
namespace {

constexpr std::size_t kLineLength = 80;

// The words in lines, each indented.
std::string Wrapped(const std::string& text, const std::string& indent) {
    std::istringstream words(text);
    std::string lines;
    std::string line = indent;
    for (std::string word; words >> word;) {
        if (line.size() > indent.size() && line.size() + 1 + word.size() > kLineLength) {
            lines += line + "\n";
            line = indent;
        }
        line += (line.size() > indent.size() ? " " : "") + word;
    }
    return lines + line + "\n";
}

bool ReaderWentAway() {
    pollfd output{STDOUT_FILENO, POLLOUT, 0};
    return ::poll(&output, 1, 0) == 1 && (output.revents & (POLLERR | POLLHUP)) != 0;
}

}  // namespace

void Require(int result, ExitStatus status, const std::string& what) {
    if (result == 0) {
        throw RegisterFailure(status, what, GetErrorCode());
    }
}

void ReportFailure(const RegisterFailure& failure, std::ostream& to) {
    to << "kkm: " << failure.what() << " (error " << failure.code() << ", "
       << KKMErrorName(failure.code()) << ")\n"
       << Wrapped(KKMErrorAdvice(failure.code()), "     ") << std::flush;
}

nlohmann::ordered_json ErrorAsJson(const RegisterFailure& failure) {
    nlohmann::ordered_json error;
    error["what"] = failure.what();
    error["code"] = failure.code();
    error["name"] = KKMErrorName(failure.code());
    error["advice"] = KKMErrorAdvice(failure.code());
    error["exit_status"] = static_cast<int>(failure.status());
    return error;
}

void ReportFailureAsJson(const RegisterFailure& failure, std::ostream& to) {
    to << nlohmann::ordered_json{{"error", ErrorAsJson(failure)}}.dump(2) << std::endl;
}

ExitStatus Report(const RegisterFailure& failure, bool as_json, Streams& streams) {
    if (as_json) {
        ReportFailureAsJson(failure, streams.out);
    }
    ReportFailure(failure, streams.err);
    return failure.status();
}

ExitStatus Report(ExitStatus status, const std::string& what, bool as_json, Streams& streams) {
    if (as_json) {
        const nlohmann::ordered_json error{{"what", what},
                                           {"exit_status", static_cast<int>(status)}};
        // A command line need not be UTF-8.
        streams.out << nlohmann::ordered_json{{"error", error}}.dump(
                           2, ' ', false, nlohmann::json::error_handler_t::replace)
                    << std::endl;
    }
    streams.err << "kkm: " << what << std::endl;
    return status;
}

ExitStatus EndOutput(ExitStatus status, bool check_printed, Streams& streams) {
    if (streams.out.flush() || ReaderWentAway()) {
        return status;
    }
    streams.err << "kkm: the results could not be written"
                << (check_printed ? "; the check is printed" : "") << std::endl;
    return status == ExitStatus::done && !check_printed ? ExitStatus::failed : status;
}

}  // namespace kkm
