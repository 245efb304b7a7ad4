#include "RuntimeError.h"

namespace rt {

std::string errorDescription(int number)
{
    switch (number) {
    case 3: return "Return without GoSub";
    case 5: return "Invalid procedure call or argument";
    case 6: return "Overflow";
    case 7: return "Out of memory";
    case 9: return "Subscript out of range";
    case 11: return "Division by zero";
    case 13: return "Type mismatch";
    case 52: return "Bad file name or number";
    case 53: return "File not found";
    case 54: return "Bad file mode";
    case 55: return "File already open";
    case 57: return "Device I/O error";
    case 58: return "File already exists";
    case 61: return "Disk full";
    case 62: return "Input past end of file";
    case 63: return "Bad record number";
    case 67: return "Too many files";
    case 70: return "Permission denied";
    case 75: return "Path/File access error";
    case 76: return "Path not found";
    case 91: return "Object variable or With block variable not set";
    case 380: return "Invalid property value";
    case 381: return "Invalid property array index";
    case 424: return "Object required";
    case 449: return "Argument not optional";
    case 32755: return "Cancel was selected.";
    default: return "Application-defined or object-defined error";
    }
}

RuntimeError::RuntimeError(int number, const std::string &description)
    : std::runtime_error(description.empty() ? errorDescription(number) : description)
    , m_number(number)
    , m_description(description.empty() ? errorDescription(number) : description)
{
}

void raise(int number, const std::string &description)
{
    throw RuntimeError(number, description);
}

void endProgram()
{
    throw ProgramEnd{};
}

} // namespace rt
