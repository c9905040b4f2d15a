#include <windows.h>

#include <tesk/file_lock.h>
#include <tesk/text.h>

namespace tesk {

ExclusiveFileLock::ExclusiveFileLock(const std::string& path) : m_handle(-1) {
    const std::wstring name = path::Wide(path + ".lock");
    HANDLE file = CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                              OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return;
    OVERLAPPED whole{};
    LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK, 0, MAXDWORD, MAXDWORD, &whole);
    m_handle = reinterpret_cast<intptr_t>(file);
}

ExclusiveFileLock::~ExclusiveFileLock() {
    // Closing the file releases the lock.
    if (m_handle != -1) CloseHandle(reinterpret_cast<HANDLE>(m_handle));
}

}  // namespace tesk
