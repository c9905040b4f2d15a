#include "cli/imageio/StandardStreams.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "cli/Errors.h"

namespace teskcolor {

namespace {

std::optional<EImageType> g_outputFormat;
int g_imageOutput = -1;  // the real standard output once claimed

std::string ErrnoText() { return std::strerror(errno); }

// The most an encoded image of `maxPixels` could take: 16-bit CMYK
// uncompressed, with room for a profile and metadata.
uint64_t InputByteCap(long long maxPixels) {
    constexpr uint64_t kHeaderRoom = uint64_t{64} << 20;
    return uint64_t(maxPixels) * 8 + kHeaderRoom;
}

}  // namespace

bool IsStandardStream(const std::string& path) { return path == "-"; }

const std::vector<uint8_t>& StandardInputBytes(long long maxPixels) {
    static std::vector<uint8_t> bytes;
    static bool read = false;
    if (read) return bytes;
    if (isatty(STDIN_FILENO) == 1)
        throw CCliError(EExit::Usage, "standard input is a terminal: pipe an image in, or name a file");
    const uint64_t cap = InputByteCap(maxPixels);
    std::vector<uint8_t> chunk(size_t{1} << 20);
    for (;;) {
        const ssize_t got = ::read(STDIN_FILENO, chunk.data(), chunk.size());
        if (got == 0) break;
        if (got < 0) {
            if (errno == EINTR) continue;
            throw CCliError(EExit::NotFound, std::string("cannot read standard input: ") + ErrnoText());
        }
        if (bytes.size() + size_t(got) > cap)
            throw CCliError(EExit::Unsupported, "standard input: more bytes than an image within --max-pixels takes");
        bytes.insert(bytes.end(), chunk.begin(), chunk.begin() + got);
    }
    read = true;
    if (bytes.empty()) throw CCliError(EExit::Corrupt, "standard input: empty");
    return bytes;
}

void SetStandardOutputFormat(EImageType type) { g_outputFormat = type; }

std::optional<EImageType> ChosenOutputFormat() { return g_outputFormat; }

EImageType StandardOutputFormat() {
    if (!g_outputFormat) throw CCliError(EExit::Usage, "an image written to '-' needs --format tiff|png|jpeg");
    return *g_outputFormat;
}

void ClaimStandardOutput() {
    if (g_imageOutput >= 0) return;
    if (isatty(STDOUT_FILENO) == 1)
        throw CCliError(EExit::Usage, "will not write image data to a terminal: redirect standard output or name a file");
    std::fflush(stdout);
    const int image = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
    if (image < 0 || dup2(STDERR_FILENO, STDOUT_FILENO) < 0)
        throw CCliError(EExit::WriteFailed, "cannot take standard output: " + ErrnoText());
    // A reader that goes away is a failed write, not a silent death.
    signal(SIGPIPE, SIG_IGN);
    g_imageOutput = image;
}

void CopyToStandardOutput(const std::string& path) {
    const int input = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (input < 0) throw CCliError(EExit::WriteFailed, "cannot read back " + path + ": " + ErrnoText());
    const auto fail = [input](const std::string& what) {
        const std::string reason = ErrnoText();
        close(input);
        throw CCliError(EExit::WriteFailed, what + ": " + reason);
    };
    std::vector<char> chunk(size_t{1} << 20);
    for (;;) {
        const ssize_t got = ::read(input, chunk.data(), chunk.size());
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) fail("cannot read back " + path);
        if (got == 0) break;
        for (ssize_t done = 0; done < got;) {
            const ssize_t put = ::write(g_imageOutput, chunk.data() + done, size_t(got - done));
            if (put < 0 && errno == EINTR) continue;
            if (put <= 0) fail("cannot write standard output");
            done += put;
        }
    }
    close(input);
}

}  // namespace teskcolor
