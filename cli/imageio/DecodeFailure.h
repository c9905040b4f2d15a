// What the JPEG and PNG readers share around their decoders: the file opened
// with its size, and the one error a failed decode becomes.
#pragma once
#include <sys/stat.h>

#include <cstdio>
#include <memory>
#include <string>

#include "cli/Errors.h"

namespace teskcolor {

using FileHandle = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

// `path` open for reading, with its size in bytes; throws NotFound.
inline FileHandle OpenForReading(const std::string& path, size_t& size) {
    FileHandle file(std::fopen(path.c_str(), "rb"), std::fclose);
    if (!file) throw CCliError(EExit::NotFound, path + ": cannot open");
    struct stat info {};
    size = fstat(fileno(file.get()), &info) == 0 ? size_t(info.st_size) : 0;
    return file;
}

// The refusal a reader chose, else a corrupt file; the text of a check that
// failed below the decoder, else the codec's own message.
[[noreturn]] inline void ThrowDecodeFailure(EExit refusal, const std::string& failure, const std::string& name,
                                            const std::string& format, const char* message) {
    const EExit code = refusal == EExit::Ok ? EExit::Corrupt : refusal;
    if (!failure.empty()) throw CCliError(code, failure);
    throw CCliError(code, name + ": " + (code == EExit::Corrupt ? "corrupt or truncated " + format + ": " : "") + message);
}

}  // namespace teskcolor
