// Separation of a 24-megapixel image into four plates beside lcms2's own
// RGB -> CMYK transform of the same pixels with the same profiles and
// precision, in one run.
//   separation_bench --benchmark_counters_tabular=true
#include <benchmark/benchmark.h>
#include <lcms2.h>
#include <stdlib.h>
#include <tesk/path.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "colormgr/ColorManager.h"
#include "host/HostServices.h"
#include "host/imaging/RowIteratorBands.h"

namespace {

constexpr int kWidth = 6000, kHeight = 4000;  // 24 megapixels
const char* const kPressProfile = "ISO Coated (FOGRA39).icc";

// A private colour directory and settings, so a benchmark run never touches
// the user's own.
struct Environment {
    Environment() {
        std::string pattern = (std::filesystem::temp_directory_path() / "tesk-bench-XXXXXX").string();
        root = mkdtemp(pattern.data());
        setenv("XDG_CONFIG_HOME", (root + "/config").c_str(), 1);
        setenv("XDG_DATA_HOME", (root + "/data").c_str(), 1);
        setenv("TESK_COLOR_DIR", (root + "/color").c_str(), 1);
        StartHostServices();
        manager = CColorManager::Instance();
        CString press(kPressProfile);
        manager->SetCMYKProfile(press);
    }
    ~Environment() { std::filesystem::remove_all(root); }
    std::string root;
    CColorManager* manager = nullptr;
};

Environment& Env() {
    static Environment environment;
    return environment;
}

std::vector<uint8_t> ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// Smooth gradients with noise, like a photograph.
CRowIterator Image(bool sixteenBit) {
    CRowIterator image;
    CRowIteratorBands::Create(image, kWidth, kHeight, sixteenBit ? VPF_RGB_16 : VPF_RGB_8);
    std::mt19937 random(1);
    for (int y = 0; y < kHeight; ++y) {
        uint8_t* row = image.GetRow(y);
        for (int x = 0; x < kWidth; ++x)
            for (int c = 0; c < 3; ++c) {
                const unsigned value = ((x * (c + 1) / 24 + y * (3 - c) / 16) + (random() & 7)) & 0xFF;
                if (sixteenBit)
                    reinterpret_cast<uint16_t*>(row)[x * 3 + c] = uint16_t(value * 257);
                else
                    row[x * 3 + c] = uint8_t(value);
            }
    }
    return image;
}

const CRowIterator& Image8() {
    static const CRowIterator image = Image(false);
    return image;
}
const CRowIterator& Image16() {
    static const CRowIterator image = Image(true);
    return image;
}

void Separate(benchmark::State& state, const CRowIterator& image) {
    CColorManager& manager = *Env().manager;
    for (auto _ : state) {
        CRowIterator c, m, y, k;
        if (manager.TransformFromRGBToCMYK(nullptr, image, c, m, y, k, true) != VELL_OK)
            state.SkipWithError("separation failed");
        benchmark::DoNotOptimize(c.GetRow(0));
    }
    state.counters["Mpixel/s"] =
        benchmark::Counter(double(kWidth) * kHeight * double(state.iterations()) / 1e6, benchmark::Counter::kIsRate);
}

// The same pixels and profiles through lcms2 directly, one call for the
// whole image, at the precision the platform's best mode uses.
// With `freshOutput`, every run writes into memory just taken from the
// system, as a separation must (its plates are new images): the difference
// is the cost of first touching that many pages.
void Lcms2(benchmark::State& state, const CRowIterator& image, cmsUInt32Number inFormat, cmsUInt32Number outFormat,
           size_t outBytesPerPixel, bool freshOutput = false) {
    Env();
    const std::string srgbPath = std::string(getenv("TESK_COLOR_DIR")) + "/sRGB Color Space Profile.icm";
    std::vector<uint8_t> srgb = ReadFile(srgbPath);
    std::vector<uint8_t> press = ReadFile(TESK_SOURCE_DIR "/data/ColorProfile/" + std::string(kPressProfile));
    cmsHPROFILE from = cmsOpenProfileFromMem(srgb.data(), cmsUInt32Number(srgb.size()));
    cmsHPROFILE to = cmsOpenProfileFromMem(press.data(), cmsUInt32Number(press.size()));
    cmsHTRANSFORM transform =
        cmsCreateTransform(from, inFormat, to, outFormat, INTENT_PERCEPTUAL, cmsFLAGS_HIGHRESPRECALC);
    const size_t outBytes = size_t(kWidth) * kHeight * outBytesPerPixel;
    std::unique_ptr<uint8_t[]> kept(new uint8_t[outBytes]);
    for (auto _ : state) {
        std::unique_ptr<uint8_t[]> fresh(freshOutput ? new uint8_t[outBytes] : nullptr);
        uint8_t* out = freshOutput ? fresh.get() : kept.get();
        cmsDoTransformLineStride(transform, image.GetRow(0), out, kWidth, kHeight, cmsUInt32Number(image.GetStride()),
                                 cmsUInt32Number(kWidth * outBytesPerPixel), 0, 0);
        benchmark::DoNotOptimize(out);
    }
    state.counters["Mpixel/s"] =
        benchmark::Counter(double(kWidth) * kHeight * double(state.iterations()) / 1e6, benchmark::Counter::kIsRate);
    cmsDeleteTransform(transform);
    cmsCloseProfile(from);
    cmsCloseProfile(to);
}

void BM_Separate8(benchmark::State& state) { Separate(state, Image8()); }
void BM_Lcms2_RGB8_to_CMYK8(benchmark::State& state) { Lcms2(state, Image8(), TYPE_BGR_8, TYPE_CMYK_8, 4); }
void BM_Lcms2_RGB8_to_CMYK8_FreshOutput(benchmark::State& state) {
    Lcms2(state, Image8(), TYPE_BGR_8, TYPE_CMYK_8, 4, true);
}
void BM_Separate16(benchmark::State& state) { Separate(state, Image16()); }
void BM_Lcms2_RGB16_to_CMYK16(benchmark::State& state) { Lcms2(state, Image16(), TYPE_BGR_16, TYPE_CMYK_16, 8); }

BENCHMARK(BM_Separate8)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2.0);
BENCHMARK(BM_Lcms2_RGB8_to_CMYK8)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2.0);
BENCHMARK(BM_Lcms2_RGB8_to_CMYK8_FreshOutput)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2.0);
BENCHMARK(BM_Separate16)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2.0);
BENCHMARK(BM_Lcms2_RGB16_to_CMYK16)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2.0);

}  // namespace

BENCHMARK_MAIN();
