// A CUPS scheduler of the test's own, listening on a socket in the test's
// folder, with queues that write each job to a file.
#pragma once
#include <sys/types.h>

#include <string>

namespace tesk::test {

class CupsServer {
public:
    // Starts cupsd in a folder of its own (filters run as another user, so
    // it cannot live in the test's private folder) and points CUPS_SERVER at
    // it; Running() tells whether it came up (false without CUPS).
    CupsServer();
    ~CupsServer();
    CupsServer(const CupsServer&) = delete;
    CupsServer& operator=(const CupsServer&) = delete;

    bool Running() const { return pid_ > 0; }
    // A queue whose PPD names `profile` (may be "") and whose jobs land in
    // OutputOf(name). True when lpadmin took it.
    bool AddQueue(const std::string& name, const std::string& profile, bool makeDefault);
    std::string OutputOf(const std::string& name) const { return folder_ + "/out/" + name + ".pdf"; }
    const std::string& Folder() const { return folder_; }

private:
    std::string folder_;
    pid_t pid_ = -1;
};

}  // namespace tesk::test
