#include "cli/SavedGammaRamp.h"

#include <tesk/path.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "cli/Errors.h"

namespace teskcolor {

namespace {

namespace fs = std::filesystem;

constexpr size_t kRampValues = 3 * 256;
constexpr size_t kFileSize = 2 * kRampValues;  // little-endian 16-bit values

std::string FileName() {
    const char* display = std::getenv("DISPLAY");
    std::string name = display && *display ? display : "virtual";
    std::replace(name.begin(), name.end(), '/', '_');
    return "gamma-ramp-" + name + ".bin";
}

std::string SavedRampPath() { return tesk::path::ConfigDirectory() + "/" + FileName(); }

// Earlier versions kept the file one folder deeper; a ramp saved there is still the user's.
void AdoptEarlierFile(const std::string& path) {
    const std::string earlier = tesk::path::ConfigDirectory() + "/teskcolor/" + FileName();
    std::error_code error;
    if (!fs::exists(path, error) && fs::exists(earlier, error)) fs::rename(earlier, path, error);
}

}  // namespace

SSavedRamp ReadSavedRamp() {
    SSavedRamp saved;
    saved.path = SavedRampPath();
    AdoptEarlierFile(saved.path);
    std::ifstream in(saved.path, std::ios::binary);
    if (!in) return saved;
    saved.exists = true;
    const std::vector<unsigned char> bytes((std::istreambuf_iterator<char>(in)), {});
    if (bytes.size() != kFileSize) {
        saved.damage = std::to_string(bytes.size()) + " bytes where a saved ramp has " + std::to_string(kFileSize);
        return saved;
    }
    SRamp ramp(kRampValues);
    for (size_t i = 0; i < kRampValues; ++i) ramp[i] = uint16_t(bytes[2 * i] | bytes[2 * i + 1] << 8);
    saved.ramp = std::move(ramp);
    return saved;
}

void SaveRamp(const SRamp& ramp) {
    std::string bytes;
    for (uint16_t value : ramp) bytes += {char(value & 0xFF), char(value >> 8)};
    const std::string path = SavedRampPath();
    if (ramp.size() != kRampValues || !tesk::path::WriteFileAtomically(path, bytes))
        throw CCliError(EExit::WriteFailed, path + ": cannot write the saved gamma ramp");
}

void ForgetSavedRamp() {
    std::error_code error;
    fs::remove(SavedRampPath(), error);
}

}  // namespace teskcolor
