#pragma once

#include <stdexcept>
#include <string>

namespace rt {

// Error numbers the logic raises and tests for; the descriptions are the platform's own.
enum ErrorNumber : int {
    ErrInvalidCall = 5,
    ErrOverflow = 6,
    ErrSubscript = 9,
    ErrDivisionByZero = 11,
    ErrTypeMismatch = 13,
    ErrBadFileNameOrNumber = 52,
    ErrFileNotFound = 53,
    ErrFileAlreadyOpen = 55,
    ErrInputPastEnd = 62,
    ErrBadRecordNumber = 63,
    ErrPermissionDenied = 70,
    ErrPathFileAccess = 75,
    ErrPathNotFound = 76,
    ErrObjectVariableNotSet = 91,
    ErrInvalidPropertyValue = 380,
    ErrObjectRequired = 424,
    ErrCancel = 32755,
};

// The standard description for an error number ("Overflow" for 6).
std::string errorDescription(int number);

// A run-time error of the logic, carrying the platform's error number.
class RuntimeError : public std::runtime_error {
public:
    explicit RuntimeError(int number, const std::string &description = {});
    int number() const { return m_number; }
    const std::string &description() const { return m_description; }

private:
    int m_number;
    std::string m_description;
};

[[noreturn]] void raise(int number, const std::string &description = {});

// Thrown by the `End` statement: unwinds to the event loop, which ends the program.
struct ProgramEnd {};

[[noreturn]] void endProgram();

} // namespace rt
