// Open profiles behind HPROFILE values. A handle is a number in a range no
// pointer can take, looked up in a table, so a closed or foreign handle is
// recognised instead of being followed.
#pragma once
#include <windows.h>

#include <icm.h>

#include <memory>
#include <mutex>
#include <string>

#include "icc_container.h"

namespace tesk::mscms {

struct OpenProfile {
    std::mutex mutex;  // guards everything below
    IccContainer container;
    bool writable = false;
    // Written back on close: set for a profile opened read-write from a file.
    std::string writeBackPath;
    bool modified = false;
};

HPROFILE RegisterProfile(std::shared_ptr<OpenProfile> profile);
// Null, with last error ERROR_INVALID_HANDLE, for a handle that is not open.
std::shared_ptr<OpenProfile> LookupProfile(HPROFILE handle);
// Removes the handle from the table; null when it was not open.
std::shared_ptr<OpenProfile> UnregisterProfile(HPROFILE handle);

}  // namespace tesk::mscms

namespace tesk::mscms {

// Largest profile the platform builds: keeps every size a DWORD with room to spare.
inline constexpr size_t kMaxProfileSize = size_t{1} << 30;

// As LookupProfile, and fails with ERROR_ACCESS_DENIED for a profile opened
// for reading only.
std::shared_ptr<OpenProfile> LookupWritableProfile(HPROFILE handle);

}  // namespace tesk::mscms
