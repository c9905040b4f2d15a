// An output file written under a temporary name in its destination folder and
// renamed over the destination only when complete; dropped otherwise.
#pragma once
#include <cstdio>
#include <string>

namespace teskcolor {

class COutputFile {
public:
    // Creates the temporary file; throws CCliError(WriteFailed) when it cannot.
    explicit COutputFile(const std::string& destination);
    ~COutputFile();
    COutputFile(const COutputFile&) = delete;
    COutputFile& operator=(const COutputFile&) = delete;

    const std::string& TempPath() const { return m_temp; }
    const std::string& Destination() const { return m_destination; }
    // The open temporary file; a writer that needs a descriptor of its own dup()s it.
    std::FILE* Stream() const { return m_stream; }
    // Closes the stream (writers that wrote by path call it first).
    void CloseStream();
    // Flushes, closes and renames; throws CCliError(WriteFailed) on failure.
    void Commit();

private:
    std::string m_destination;
    std::string m_temp;
    std::FILE* m_stream = nullptr;
    bool m_committed = false;
};

}  // namespace teskcolor
