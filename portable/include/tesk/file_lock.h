// An exclusive lock between processes, held on "<path>.lock" for the
// object's lifetime. Taking it waits for the holder; a lock file that cannot
// be opened leaves the caller unlocked rather than failing its work.
#pragma once
#include <cstdint>
#include <string>

#include "portable_export.h"

namespace tesk {

class TESK_PORTABLE_API ExclusiveFileLock {
public:
    explicit ExclusiveFileLock(const std::string& path);
    ~ExclusiveFileLock();
    ExclusiveFileLock(const ExclusiveFileLock&) = delete;
    ExclusiveFileLock& operator=(const ExclusiveFileLock&) = delete;

private:
    intptr_t m_handle;  // the open lock file (descriptor or HANDLE); -1 when none
};

}  // namespace tesk
