#include <fcntl.h>
#include <sys/file.h>
#include <tesk/file_lock.h>
#include <unistd.h>

namespace tesk {

ExclusiveFileLock::ExclusiveFileLock(const std::string& path)
    : m_handle(open((path + ".lock").c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0644)) {
    if (m_handle >= 0) flock(static_cast<int>(m_handle), LOCK_EX);
}

ExclusiveFileLock::~ExclusiveFileLock() {
    if (m_handle >= 0) close(static_cast<int>(m_handle));
}

}  // namespace tesk
