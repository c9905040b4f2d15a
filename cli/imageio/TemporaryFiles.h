// Temporary files that must not outlive an interrupted run: SIGINT and SIGTERM
// remove every registered one and then end the program as the signal would.
#pragma once
#include <signal.h>

#include <string>

namespace teskcolor {

// Installs the signal handlers on first use. A path too long for the
// registry is not registered (and survives a signal).
void RegisterTemporary(const std::string& path);
void ForgetTemporary(const std::string& path);

// Holds SIGINT and SIGTERM back for the life of the object, so that a run
// of renames completes or is undone before the program is stopped.
class CSignalsHeld {
public:
    CSignalsHeld();
    ~CSignalsHeld();
    CSignalsHeld(const CSignalsHeld&) = delete;
    CSignalsHeld& operator=(const CSignalsHeld&) = delete;

private:
    sigset_t m_saved;
};

}  // namespace teskcolor
