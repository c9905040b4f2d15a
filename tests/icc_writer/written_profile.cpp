#include "written_profile.h"

#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <filesystem>

#include "support/temp_env.h"

namespace tesk::test {

uint32_t BE32(const std::vector<uint8_t>& bytes, size_t offset) {
    uint32_t value = 0;
    for (size_t i = 0; i < 4; ++i) value = (value << 8) | (offset + i < bytes.size() ? bytes[offset + i] : 0);
    return value;
}

uint16_t BE16(const std::vector<uint8_t>& bytes, size_t offset) {
    return static_cast<uint16_t>(BE32(bytes, offset) >> 16);
}

WrittenProfile::WrittenProfile(const std::string& path) : bytes_(ReadBytes(path)) {}

uint32_t WrittenProfile::BE32(size_t offset) const { return tesk::test::BE32(bytes_, offset); }

std::optional<std::vector<uint8_t>> WrittenProfile::Tag(uint32_t signature) const {
    const uint32_t count = TagCount();
    for (uint32_t i = 0; i < count && 132 + 12 * (size_t{i} + 1) <= bytes_.size(); ++i) {
        const size_t entry = 132 + 12 * size_t{i};
        if (BE32(entry) != signature) continue;
        const size_t offset = BE32(entry + 4), size = BE32(entry + 8);
        if (offset > bytes_.size() || size > bytes_.size() - offset) return std::nullopt;
        return std::vector<uint8_t>(bytes_.begin() + static_cast<long>(offset),
                                    bytes_.begin() + static_cast<long>(offset + size));
    }
    return std::nullopt;
}

std::optional<IccDumpResult> RunIccDump(const std::string& path) {
    const char* const candidates[] = {"/usr/bin/iccdump", "/usr/local/bin/iccdump"};
    std::string tool;
    for (const char* candidate : candidates)
        if (std::filesystem::exists(candidate)) tool = candidate;
    if (tool.empty()) return std::nullopt;

    std::string quoted = "'";
    for (char c : path) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    quoted += "'";
    FILE* pipe = popen((tool + " -v 3 " + quoted + " 2>&1").c_str(), "r");
    if (!pipe) return std::nullopt;
    IccDumpResult result;
    std::array<char, 4096> chunk;
    size_t got;
    while ((got = fread(chunk.data(), 1, chunk.size(), pipe)) > 0) result.output.append(chunk.data(), got);
    const int status = pclose(pipe);
    const bool exitedCleanly = status != -1 && WIFEXITED(status) && WEXITSTATUS(status) == 0;
    // iccdump exits with 0 even when it cannot decode a tag; it says so in the dump.
    bool complained = false;
    for (const char* word : {"rror", "arning", "ailed", "Unable", "Unknown"})
        complained = complained || result.output.find(word) != std::string::npos;
    result.clean = exitedCleanly && !complained;
    return result;
}

}  // namespace tesk::test
