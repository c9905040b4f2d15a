#include "cli/PlateFiles.h"

#include <exception>
#include <filesystem>
#include <thread>

#include "cli/Errors.h"
#include "cli/imageio/ImageBands.h"
#include "cli/imageio/ImageFile.h"
#include "cli/imageio/OutputFile.h"
#include "cli/imageio/StandardStreams.h"

namespace teskcolor {

std::array<std::string, 4> PlatePaths(const std::string& pattern) {
    if (IsStandardStream(pattern))
        throw CCliError(EExit::Usage, "four plates are four files: '-' cannot stand for them (a packed CMYK image can)");
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
                                     COutputTransaction& transaction, CStatusControl* status) {
    const auto paths = PlatePaths(pattern);
    // The four files are independent: written side by side, the first plate reporting progress.
    SWriteOptions options;
    options.transaction = &transaction;
    std::array<std::exception_ptr, 4> failures;
    std::vector<std::thread> writers;
    for (size_t i = 0; i < 4; ++i)
        writers.emplace_back([&, i] {
            try {
                WriteImage(paths[i], plates[i], i == 0 ? status : nullptr, options);
            } catch (...) {
                failures[i] = std::current_exception();
            }
        });
    for (std::thread& writer : writers) writer.join();
    for (const std::exception_ptr& failure : failures)
        if (failure) std::rethrow_exception(failure);
    return {paths.begin(), paths.end()};
}

std::vector<std::string> WritePlatesOfPacked(const std::string& pattern, const SImage& cmyk, bool invert) {
    const auto paths = PlatePaths(pattern);
    COutputTransaction transaction;
    SWriteOptions options;
    options.transaction = &transaction;
    const int width = cmyk.pixels.GetWidth(), height = cmyk.pixels.GetHeight();
    for (size_t ink = 0; ink < 4; ++ink) {
        CRowIterator plate;
        if (!plate.Create(width, height, VPF_GREY_8)) throw CCliError(EExit::Failed, "not enough memory for a plate");
        for (int y = 0; y < height; ++y) {
            const BYTE* from = cmyk.pixels.GetRow(y);
            BYTE* to = plate.GetRow(y);
            for (int x = 0; x < width; ++x) to[x] = BYTE(invert ? 255 - from[4 * x + ink] : from[4 * x + ink]);
        }
        SImageHeader header{width, height, VPF_GREY_8, false, {}};
        header.inkAmounts = !invert;
        const auto writer = OpenImageBandWriter(paths[ink], header, options);
        writer->Append(plate);
        writer->Commit();
    }
    transaction.Commit();
    return {paths.begin(), paths.end()};
}

}  // namespace teskcolor
