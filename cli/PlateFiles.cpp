#include "cli/PlateFiles.h"

#include <filesystem>

#include "cli/imageio/ImageFile.h"

namespace teskcolor {

std::array<std::string, 4> PlatePaths(const std::string& pattern) {
    const std::filesystem::path path(pattern);
    std::array<std::string, 4> paths;
    for (int i = 0; i < 4; ++i) {
        std::filesystem::path plate = path;
        plate.replace_filename(path.stem().string() + "-" + kInkNames[i] + path.extension().string());
        paths[size_t(i)] = plate.string();
    }
    return paths;
}

std::vector<std::string> WritePlates(const std::string& pattern, const std::array<SImage, 4>& plates,
                                     CStatusControl* status) {
    const auto paths = PlatePaths(pattern);
    std::vector<std::string> written;
    try {
        for (size_t i = 0; i < 4; ++i) {
            WriteImage(paths[i], plates[i], status);
            written.push_back(paths[i]);
        }
    } catch (...) {
        std::error_code ignored;
        for (const std::string& path : written) std::filesystem::remove(path, ignored);
        throw;
    }
    return written;
}

}  // namespace teskcolor
