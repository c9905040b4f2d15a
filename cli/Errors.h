// Failures of the command-line host: one line of text and the exit code that
// scripts can tell apart.
#pragma once
#include <stdexcept>
#include <string>

namespace teskcolor {

enum class EExit : int {
    Ok = 0,
    Failed = 1,          // the module reported a failure
    Usage = 2,           // bad arguments
    NotFound = 3,        // an input file is missing or unreadable
    Corrupt = 4,         // a truncated or corrupt image or profile
    Unsupported = 5,     // a pixel format or file layout that is not handled
    WrongProfile = 6,    // a profile of the wrong class or colour space
    WriteFailed = 7,     // an output file could not be written
    NoDisplay = 8,       // a command that shows something found no display
    SomeFailed = 9,      // of several files, some were written and some failed
};

class CCliError : public std::runtime_error {
public:
    CCliError(EExit code, const std::string& message) : std::runtime_error(message), m_code(code) {}
    EExit Code() const { return m_code; }

private:
    EExit m_code;
};

}  // namespace teskcolor
