#include "profile_file_cache.h"

#include <sys/stat.h>

#include <algorithm>
#include <ctime>
#include <memory>
#include <mutex>
#include <vector>

#include "color_directory.h"

namespace tesk::mscms {

namespace {

struct FileIdentity {
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
    timespec modified{}, changed{};

    bool operator==(const FileIdentity& other) const {
        return device == other.device && inode == other.inode && size == other.size &&
               modified.tv_sec == other.modified.tv_sec && modified.tv_nsec == other.modified.tv_nsec &&
               changed.tv_sec == other.changed.tv_sec && changed.tv_nsec == other.changed.tv_nsec;
    }
};

bool IdentityOf(const std::string& path, FileIdentity& identity) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return false;
    identity = {status.st_dev, status.st_ino, status.st_size, status.st_mtim, status.st_ctim};
    return true;
}

// Older than any timestamp resolution in use (FAT's is two seconds).
constexpr time_t kSettledSeconds = 3;

bool HasSettled(const FileIdentity& identity) {
    const time_t latest = std::max(identity.modified.tv_sec, identity.changed.tv_sec);
    return latest + kSettledSeconds < std::time(nullptr);
}

struct KeptFile {
    std::string path;
    FileIdentity identity;
    std::shared_ptr<const Bytes> bytes;
    unsigned long long lastUse = 0;
};

constexpr size_t kMaxFiles = 16;
constexpr size_t kMaxBytes = size_t{64} << 20;

std::mutex g_mutex;
std::vector<KeptFile> g_files;
unsigned long long g_uses = 0;

void Keep(const std::string& path, const FileIdentity& identity, const Bytes& bytes) {
    std::erase_if(g_files, [&](const KeptFile& f) { return f.path == path; });
    g_files.push_back({path, identity, std::make_shared<const Bytes>(bytes), ++g_uses});
    auto total = [] {
        size_t sum = 0;
        for (const KeptFile& f : g_files) sum += f.bytes->size();
        return sum;
    };
    while (g_files.size() > kMaxFiles || (g_files.size() > 1 && total() > kMaxBytes)) {
        auto oldest = std::min_element(g_files.begin(), g_files.end(),
                                       [](const KeptFile& a, const KeptFile& b) { return a.lastUse < b.lastUse; });
        g_files.erase(oldest);
    }
}

}  // namespace

bool ReadProfileFile(const std::string& nativePath, Bytes& bytes) {
    FileIdentity before;
    const bool known = IdentityOf(nativePath, before);
    if (known) {
        std::lock_guard lock(g_mutex);
        for (KeptFile& kept : g_files) {
            if (kept.path == nativePath && kept.identity == before) {
                kept.lastUse = ++g_uses;
                bytes = *kept.bytes;
                return true;
            }
        }
    }
    if (!ReadWholeFile(nativePath, bytes)) return false;
    // Kept only when nothing changed while it was read and the file has settled.
    FileIdentity after;
    if (known && IdentityOf(nativePath, after) && after == before && HasSettled(after) &&
        bytes.size() == size_t(after.size)) {
        std::lock_guard lock(g_mutex);
        Keep(nativePath, after, bytes);
    }
    return true;
}

}  // namespace tesk::mscms
