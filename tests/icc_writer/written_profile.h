// A profile the writer produced, parsed independently of the module, and
// ArgyllCMS iccdump's verdict on it.
#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "support/big_endian.h"
#include "support/programs.h"
#include "support/temp_env.h"

namespace tesk::test {

class WrittenProfile {
public:
    explicit WrittenProfile(const std::string& path) : bytes_(ReadBytes(path)) {}

    const std::vector<uint8_t>& Bytes() const { return bytes_; }
    uint32_t HeaderWord(size_t offset) const { return BE32(bytes_, offset); }
    uint32_t TagCount() const { return BE32(bytes_, 128); }
    // The tag's data as the table places it; nothing when absent or outside the file.
    std::optional<std::vector<uint8_t>> Tag(uint32_t signature) const {
        for (uint32_t i = 0; i < TagCount() && 132 + 12 * (size_t{i} + 1) <= bytes_.size(); ++i) {
            const size_t entry = 132 + 12 * size_t{i};
            if (BE32(bytes_, entry) != signature) continue;
            const size_t offset = BE32(bytes_, entry + 4), size = BE32(bytes_, entry + 8);
            if (offset > bytes_.size() || size > bytes_.size() - offset) return std::nullopt;
            return std::vector<uint8_t>(bytes_.begin() + long(offset), bytes_.begin() + long(offset + size));
        }
        return std::nullopt;
    }

private:
    std::vector<uint8_t> bytes_;
};

// iccdump's full dump, and whether it ran and reported no error, warning or
// undecodable tag. Nothing when iccdump is not installed.
struct IccDumpResult {
    bool clean = false;
    std::string output;
};
inline std::optional<IccDumpResult> RunIccDump(const std::string& path) {
    const std::string tool = FindTool("iccdump");
    if (tool.empty()) return std::nullopt;
    const ProgramRun run = RunShell(ShellQuote(tool) + " -v 3 " + ShellQuote(path) + " 2>&1");
    IccDumpResult result{false, run.out};
    // iccdump exits with 0 even when it cannot decode a tag; it says so in the dump.
    bool complained = false;
    for (const char* word : {"rror", "arning", "ailed", "Unable", "Unknown"})
        complained = complained || result.output.find(word) != std::string::npos;
    result.clean = run.code == 0 && !complained;
    return result;
}

}  // namespace tesk::test
