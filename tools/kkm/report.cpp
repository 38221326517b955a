#include "kkm/report.h"

#include <nlohmann/json.hpp>

#include "VeskTarvoM5/VeskTarvoM5.h"
#include "kkm/advice.h"

namespace kkm {

void Require(int result, ExitStatus status, const std::string& what) {
    if (result == 0) {
        throw RegisterFailure(status, what, GetErrorCode());
    }
}

void ReportFailure(const RegisterFailure& failure, std::ostream& to) {
    const Advice advice = AdviceFor(failure.code());
    to << "kkm: " << failure.what() << " (error " << failure.code() << ", " << advice.name << ")\n"
       << "     " << advice.happened << "\n     " << advice.remedy << std::endl;
}

void ReportFailureAsJson(const RegisterFailure& failure, std::ostream& to) {
    const Advice advice = AdviceFor(failure.code());
    nlohmann::ordered_json error;
    error["what"] = failure.what();
    error["code"] = failure.code();
    error["name"] = advice.name;
    error["happened"] = advice.happened;
    error["remedy"] = advice.remedy;
    to << nlohmann::ordered_json{{"error", error}}.dump(2) << std::endl;
}

}  // namespace kkm
