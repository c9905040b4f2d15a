// What a test needs to look at a profile the writer produced: the file's
// bytes parsed independently of the module, and the tools that judge it.
#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tesk::test {

class WrittenProfile {
public:
    explicit WrittenProfile(const std::string& path);

    const std::vector<uint8_t>& Bytes() const { return bytes_; }
    uint32_t HeaderWord(size_t offset) const { return BE32(offset); }
    uint32_t TagCount() const { return BE32(128); }
    // The tag's data as the table places it; nothing when absent or outside the file.
    std::optional<std::vector<uint8_t>> Tag(uint32_t signature) const;

    uint32_t BE32(size_t offset) const;

private:
    std::vector<uint8_t> bytes_;
};

uint32_t BE32(const std::vector<uint8_t>& bytes, size_t offset);
uint16_t BE16(const std::vector<uint8_t>& bytes, size_t offset);

// ArgyllCMS iccdump's full dump of the file, and whether it ran and
// reported no error, warning or undecodable tag. Empty optional when iccdump is not installed.
struct IccDumpResult {
    bool clean = false;
    std::string output;
};
std::optional<IccDumpResult> RunIccDump(const std::string& path);

}  // namespace tesk::test
