#include "cli/imageio/OutputFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "cli/Errors.h"

namespace teskcolor {

namespace {
std::string ErrnoText() { return std::strerror(errno); }
}  // namespace

COutputFile::COutputFile(const std::string& destination) : m_destination(destination) {
    std::filesystem::path target(destination);
    std::filesystem::path folder = target.parent_path();
    if (folder.empty()) folder = ".";
    std::string pattern = (folder / ("." + target.filename().string() + ".XXXXXX")).string();
    int fd = mkstemp(pattern.data());
    if (fd < 0) throw CCliError(EExit::WriteFailed, "cannot create a file in " + folder.string() + ": " + ErrnoText());
    // mkstemp makes the file private; an image is as readable as any other new file.
    mode_t mask = umask(0);
    umask(mask);
    fchmod(fd, 0666 & ~mask);
    m_temp = pattern;
    m_stream = fdopen(fd, "w+b");
    if (!m_stream) {
        close(fd);
        unlink(m_temp.c_str());
        throw CCliError(EExit::WriteFailed, "cannot open " + m_temp + ": " + ErrnoText());
    }
}

COutputFile::~COutputFile() {
    if (m_stream) std::fclose(m_stream);
    if (!m_committed) unlink(m_temp.c_str());
}

void COutputFile::CloseStream() {
    if (!m_stream) return;
    bool ok = std::fclose(m_stream) == 0;
    m_stream = nullptr;
    if (!ok) throw CCliError(EExit::WriteFailed, "cannot write " + m_destination + ": " + ErrnoText());
}

void COutputFile::Commit() {
    if (m_stream) {
        if (std::fflush(m_stream) != 0)
            throw CCliError(EExit::WriteFailed, "cannot write " + m_destination + ": " + ErrnoText());
    }
    CloseStream();
    if (std::rename(m_temp.c_str(), m_destination.c_str()) != 0)
        throw CCliError(EExit::WriteFailed, "cannot create " + m_destination + ": " + ErrnoText());
    m_committed = true;
}

}  // namespace teskcolor
