#pragma once

#include <functional>
#include <string>
#include <vector>

namespace platform::writer {

struct ChildRun {
    bool started = false;  // false when the program couldn't be run at all
    int exitCode = -1;     // the exit status; 128 + the signal when a signal ended it
    bool timedOut = false; // ended by us after the time limit
    bool stopped = false;  // ended by us on request
    std::string output;    // all it printed (stdout and stderr), lines joined by '\n'
};

// Runs a program without a shell (the arguments are passed as they are), stdin from /dev/null,
// stdout and stderr into one pipe read line by line; a line ends at '\n' or at '\r', which is how
// recorders redraw their progress line. `onLine` is called on this thread for every non-empty
// line. `stop` is polled; when it says so, after `timeoutMs` (0: none), or when the child has
// printed nothing for `quietTimeoutMs` (0: no limit), the child gets SIGTERM and, two seconds
// later, SIGKILL. Messages are asked for in the C locale.
ChildRun runChild(const std::string &program, const std::vector<std::string> &args,
                  const std::function<void(const std::string &line)> &onLine = {},
                  const std::function<bool()> &stop = {}, int timeoutMs = 0, int quietTimeoutMs = 0);

// Whether `program` names an executable file, directly or through PATH.
bool findExecutable(const std::string &program);

} // namespace platform::writer
