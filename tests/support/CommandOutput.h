#pragma once

#include <cstdio>
#include <string>

#include <gtest/gtest.h>

namespace testsupport {

// What a shell command prints on its standard output, and whether it ended with status 0; the
// tests compare the program's results with those of the tools a user would otherwise run.
struct CommandOutput {
    std::string text;
    bool succeeded = false;

    // The text without the line ending a tool puts after its one answer.
    std::string line() const
    {
        std::string s = text;
        while (!s.empty() && (s.back() == '\n' || s.back() == '\r'))
            s.pop_back();
        return s;
    }
};

inline CommandOutput runCommand(const std::string &command)
{
    CommandOutput result;
    FILE *pipe = ::popen(command.c_str(), "r");
    if (!pipe)
        return result;
    char buffer[4096];
    size_t n = 0;
    while ((n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0)
        result.text.append(buffer, n);
    result.succeeded = ::pclose(pipe) == 0;
    return result;
}

// A set-up or reference command that must succeed: one that fails, or can't start, fails the
// test that ran it, naming the command, so a broken set-up is never taken for the program's fault.
inline CommandOutput runTool(const std::string &command)
{
    CommandOutput result = runCommand(command);
    if (!result.succeeded)
        ADD_FAILURE() << "command failed: " << command;
    return result;
}

} // namespace testsupport
