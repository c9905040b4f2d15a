// An output file written under a temporary name in its destination folder and
// renamed over the destination only when complete; dropped otherwise, also
// when the program is stopped by SIGINT or SIGTERM.
#pragma once
#include <cstdio>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace teskcolor {

class COutputTransaction;

class COutputFile {
public:
    // Creates the temporary file; throws CCliError(WriteFailed) when it cannot.
    // With a transaction, Commit only completes the file and the transaction
    // gives it its name, together with the others.
    explicit COutputFile(const std::string& destination, COutputTransaction* transaction = nullptr);
    ~COutputFile();
    COutputFile(const COutputFile&) = delete;
    COutputFile& operator=(const COutputFile&) = delete;

    const std::string& TempPath() const { return m_temp; }
    const std::string& Destination() const { return m_destination; }
    // The open temporary file; a writer that needs a descriptor of its own dup()s it.
    std::FILE* Stream() const { return m_stream; }
    // Closes the stream (writers that wrote by path call it first).
    void CloseStream();
    // Flushes, closes and renames (or hands the file to the transaction);
    // throws CCliError(WriteFailed) on failure.
    void Commit();

private:
    std::string m_destination;
    std::string m_temp;
    std::FILE* m_stream = nullptr;
    COutputTransaction* m_transaction = nullptr;
    bool m_committed = false;
};

// Several outputs that appear together or not at all: each is written under
// a temporary name, and Commit renames them all only when every one is
// complete. Without a commit, or when a rename fails, the files the user had
// are left as they were and only the temporaries go.
class COutputTransaction {
public:
    COutputTransaction() = default;
    ~COutputTransaction();
    COutputTransaction(const COutputTransaction&) = delete;
    COutputTransaction& operator=(const COutputTransaction&) = delete;

    // Throws CCliError(WriteFailed) and puts back the files renamed before
    // the one that failed.
    void Commit();

private:
    friend class COutputFile;
    void Adopt(const std::string& temp, const std::string& destination);

    std::mutex m_mutex;  // files are written side by side
    std::vector<std::pair<std::string, std::string>> m_files;  // temporary, destination
    bool m_committed = false;
};

}  // namespace teskcolor
