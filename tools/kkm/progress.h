// The steps of a command as they go.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <ostream>
#include <string>
#include <thread>

#include "kkm/terminal.h"

namespace kkm {

// On a terminal the line of the running step shows the seconds that it has taken, drawn by a thread
// of its own since the library blocks; elsewhere each step is one plain line, written when it
// begins. Used by one thread.
class Progress {
  public:
    Progress(std::ostream& to, Terminal terminal) : to_(to), terminal_(terminal) {}
    // The line of a step that is still running is erased.
    ~Progress() { Erase(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // Ends the running step as done and begins the next one.
    void Step(const std::string& text);
    // Ends the running step as done and writes a line of its own.
    void Note(const std::string& text);
    // Ends the running step, if there is one.
    void Done();
    void Failed();
    void Erase();

  private:
    void End(const char* outcome, const char* colour);
    void StopTicker();
    void Tick();

    std::ostream& to_;
    Terminal terminal_;
    std::string step_;  // empty: none is running
    std::chrono::steady_clock::time_point begin_;

    std::thread ticker_;
    std::mutex mutex_;
    std::condition_variable stop_signal_;
    bool stop_ = false;
};

// A bar for a known number of things, with the time that the rest takes. Only a terminal sees it;
// it is erased at the end.
class ProgressBar {
  public:
    ProgressBar(std::ostream& to, Terminal terminal, const std::string& what, int all);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    // One more is done.
    void Advance();

  private:
    std::ostream& to_;
    bool live_;
    std::string what_;
    int all_;
    int done_ = 0;
    std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
};

// "reading [#####.....] 12 of 24, 3 s left"
std::string BarLine(const std::string& what, int done, int all, std::chrono::milliseconds elapsed);

// "  sending ... 12 s": the running step.
std::string TickerLine(const std::string& step, std::chrono::seconds elapsed);

}  // namespace kkm
