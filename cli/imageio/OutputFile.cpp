#include "cli/imageio/OutputFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "cli/Errors.h"
#include "cli/imageio/StandardStreams.h"
#include "cli/imageio/TemporaryFiles.h"

namespace teskcolor {

namespace {

std::string ErrnoText() { return std::strerror(errno); }

std::string TemporaryPattern(const std::string& destination, const char* kind) {
    if (IsStandardStream(destination)) {
        // Completed privately, then copied out: a failure sends nothing half-made.
        const char* folder = std::getenv("TMPDIR");
        return std::string(folder && *folder ? folder : "/tmp") + "/teskcolor-stdout" + kind + "XXXXXX";
    }
    const std::filesystem::path target(destination);
    std::filesystem::path folder = target.parent_path();
    if (folder.empty()) folder = ".";
    return (folder / ("." + target.filename().string() + kind + "XXXXXX")).string();
}

void RemoveTemporary(const std::string& path) {
    unlink(path.c_str());
    ForgetTemporary(path);
}

}  // namespace

COutputFile::COutputFile(const std::string& destination, COutputTransaction* transaction)
    : m_destination(destination), m_transaction(transaction) {
    if (IsStandardStream(destination)) {
        if (transaction) throw CCliError(EExit::Usage, "several files cannot go to standard output");
        ClaimStandardOutput();
    }
    std::string pattern = TemporaryPattern(destination, ".");
    // Registered before it exists: a signal between the two leaves nothing behind.
    int fd = -1;
    {
        CSignalsHeld held;
        fd = mkstemp(pattern.data());
        if (fd >= 0) RegisterTemporary(pattern);
    }
    if (fd < 0) {
        const std::string folder = std::filesystem::path(pattern).parent_path().string();
        throw CCliError(EExit::WriteFailed, "cannot create a file in " + folder + ": " + ErrnoText());
    }
    // mkstemp makes the file private; an image is as readable as any other new file.
    mode_t mask = umask(0);
    umask(mask);
    if (!IsStandardStream(destination)) fchmod(fd, 0666 & ~mask);
    m_temp = pattern;
    m_stream = fdopen(fd, "w+b");
    if (!m_stream) {
        close(fd);
        RemoveTemporary(m_temp);
        throw CCliError(EExit::WriteFailed, "cannot open " + m_temp + ": " + ErrnoText());
    }
}

COutputFile::~COutputFile() {
    if (m_stream) std::fclose(m_stream);
    if (!m_committed) RemoveTemporary(m_temp);
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
    if (IsStandardStream(m_destination)) {
        CopyToStandardOutput(m_temp);
        RemoveTemporary(m_temp);
    } else if (m_transaction) {
        m_transaction->Adopt(m_temp, m_destination);
    } else {
        CSignalsHeld held;
        if (std::rename(m_temp.c_str(), m_destination.c_str()) != 0)
            throw CCliError(EExit::WriteFailed, "cannot create " + m_destination + ": " + ErrnoText());
        ForgetTemporary(m_temp);
    }
    m_committed = true;
}

COutputTransaction::~COutputTransaction() {
    if (m_committed) return;
    for (const auto& [temp, destination] : m_files) RemoveTemporary(temp);
}

void COutputTransaction::Adopt(const std::string& temp, const std::string& destination) {
    std::lock_guard lock(m_mutex);
    m_files.emplace_back(temp, destination);
}

void COutputTransaction::Commit() {
    CSignalsHeld held;
    // A second name for every file about to be replaced, so that a rename
    // that fails half-way can put the earlier ones back.
    std::vector<std::string> keeps(m_files.size());
    const auto dropKeeps = [&] {
        for (const std::string& keep : keeps)
            if (!keep.empty()) RemoveTemporary(keep);
    };
    for (size_t i = 0; i < m_files.size(); ++i) {
        const std::string& destination = m_files[i].second;
        if (access(destination.c_str(), F_OK) != 0) continue;
        std::string keep = TemporaryPattern(destination, ".old.");
        const int fd = mkstemp(keep.data());
        if (fd >= 0) close(fd);
        if (fd < 0 || unlink(keep.c_str()) != 0 || link(destination.c_str(), keep.c_str()) != 0) {
            const std::string reason = ErrnoText();
            dropKeeps();
            throw CCliError(EExit::WriteFailed, "cannot keep " + destination + " while replacing it: " + reason);
        }
        RegisterTemporary(keep);
        keeps[i] = keep;
    }
    for (size_t i = 0; i < m_files.size(); ++i) {
        const auto& [temp, destination] = m_files[i];
        if (std::rename(temp.c_str(), destination.c_str()) == 0) continue;
        const std::string reason = ErrnoText();
        for (size_t j = 0; j < i; ++j) {
            if (!keeps[j].empty())
                std::rename(keeps[j].c_str(), m_files[j].second.c_str());
            else
                unlink(m_files[j].second.c_str());
        }
        dropKeeps();
        throw CCliError(EExit::WriteFailed, "cannot create " + destination + ": " + reason);
    }
    for (const auto& file : m_files) ForgetTemporary(file.first);
    dropKeeps();
    m_committed = true;
}

}  // namespace teskcolor
