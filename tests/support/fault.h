// What an action threw, as one line that a test can compare.
#pragma once

#include <exception>
#include <string>

#include "protocol/tarvo_error.h"
#include "serial/mini_com_error.h"
#include "support/world.h"

namespace test {

// "" for no exception, "2 CTarvo::keylock - error" for a protocol error with its detail,
// "port errReadFile: ..." for the port, "other" for a plain exception.
template <typename Action>
std::string FaultOf(Action action) {
    const std::size_t before = World::Get().Details().size();
    try {
        action();
    } catch (const ETarvo& e) {
        const auto& details = World::Get().Details();
        const bool known = details.size() > before && details.back().code == e.code();
        return std::to_string(e.code()) + ' ' + (known ? details.back().text : "(unknown)");
    } catch (const EMiniCom& e) {
        return "port " + e.message;
    } catch (const std::exception&) {
        return "other";
    }
    return "";
}

constexpr auto kSilenceFault = "port errReadFile: CMiniCom::Read sum timeout need read";

}  // namespace test
