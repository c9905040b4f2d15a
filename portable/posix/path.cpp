#include <fcntl.h>
#include <sys/stat.h>
#include <tesk/path.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace tesk::path {

std::string ToNative(const wchar_t* windowsPath) {
    if (!windowsPath) return {};
    std::wstring text(windowsPath);
    // "Z:\..." stands for the root, as under Wine.
    if (text.size() >= 2 && text[1] == L':' && iswalpha(text[0])) text.erase(0, 2);
    std::string native;
    native.reserve(text.size());
    char previous = 0;
    for (char ch : Utf8(text)) {
        if (ch == '\\') ch = '/';
        // The module joins a folder ending in a separator with "\\", giving two in a row.
        if (ch == '/' && previous == '/') continue;
        native += ch;
        previous = ch;
    }
    return native;
}

std::string ConfigDirectory() {
    std::string base;
    if (const char* xdg = std::getenv("XDG_CONFIG_HOME"); xdg && *xdg) {
        base = xdg;
    } else if (const char* home = std::getenv("HOME"); home && *home) {
        base = std::string(home) + "/.config";
    } else {
        base = "/tmp";
    }
    std::string dir = base + "/teskcolor";
    std::error_code ignored;
    std::filesystem::create_directories(dir, ignored);
    return dir;
}

bool WriteFileAtomically(const std::string& nativePath, const std::string& bytes) {
    std::string temp = nativePath + ".XXXXXX";
    int fd = mkstemp(temp.data());
    if (fd < 0) return false;
    size_t done = 0;
    while (done < bytes.size()) {
        ssize_t n = write(fd, bytes.data() + done, bytes.size() - done);
        if (n < 0) {
            if (errno == EINTR) continue;
            close(fd);
            unlink(temp.c_str());
            return false;
        }
        done += static_cast<size_t>(n);
    }
    fchmod(fd, 0644);
    // The data must be on disk before the rename makes it the file, or a crash
    // could leave an empty file where the old one was.
    if (fsync(fd) != 0 || close(fd) != 0) {
        unlink(temp.c_str());
        return false;
    }
    if (rename(temp.c_str(), nativePath.c_str()) != 0) {
        unlink(temp.c_str());
        return false;
    }
    return true;
}

}  // namespace tesk::path
