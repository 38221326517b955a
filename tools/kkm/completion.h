// What the shell offers behind the words of a command line.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace kkm {

// The candidates for the last word, which may be empty, behind the words before it (without the
// program's name). None where only a file or the user's own word fits.
std::vector<std::string> Complete(const CLI::App& app, const std::vector<std::string>& words);

}  // namespace kkm
