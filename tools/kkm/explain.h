// kkm explain: codes in words, and a trace file retold.
#pragma once

#include <string>

#include "kkm/exit_status.h"
#include "kkm/streams.h"

namespace kkm {

// A code of the library, of a state or of a key: "34", "echCancelCheck", "0xC8", "ks_checkout".
// Without a meaning it is taken for the path of a trace file.
ExitStatus RunExplain(const std::string& what, bool as_json, Streams& streams);

}  // namespace kkm
