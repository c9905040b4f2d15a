// TranslateBitmapBits on a 24-megapixel image beside cmsDoTransformLineStride
// on the same buffers, and the cost of a second identical transform.
//   translate_bench --benchmark_counters_tabular=true
#include <benchmark/benchmark.h>
#include <windows.h>

#include <icm.h>
#include <lcms2.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

using Bytes = std::vector<uint8_t>;

constexpr DWORD kWidth = 6000, kHeight = 4000;  // 24 megapixels

Bytes ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

const Bytes& Srgb() {
    static const Bytes bytes = ReadFile("/usr/share/color/icc/colord/sRGB.icc");
    return bytes;
}
const Bytes& AdobeRgb() {
    static const Bytes bytes = ReadFile("/usr/share/color/icc/colord/AdobeRGB1998.icc");
    return bytes;
}
const Bytes& Fogra() {
    static const Bytes bytes = ReadFile(TESK_SOURCE_DIR "/data/ColorProfile/ISO Coated (FOGRA39).icc");
    return bytes;
}

// A photograph-like image: smooth gradients with noise, so neither the
// pixel cache of lcms2 nor pure noise dominates.
Bytes Image(size_t channels, size_t bytesPerChannel) {
    Bytes image(size_t{kWidth} * kHeight * channels * bytesPerChannel);
    std::mt19937 random(1);
    for (size_t y = 0; y < kHeight; ++y) {
        for (size_t x = 0; x < kWidth; ++x) {
            for (size_t c = 0; c < channels; ++c) {
                const unsigned base = (x * (c + 1) / 24 + y * (3 - c) / 16) & 0xFF;
                const unsigned value = (base + (random() & 7)) & 0xFF;
                uint8_t* p = image.data() + ((y * kWidth + x) * channels + c) * bytesPerChannel;
                p[0] = static_cast<uint8_t>(value);
                if (bytesPerChannel == 2) p[1] = static_cast<uint8_t>(value ^ 0x5A);
            }
        }
    }
    return image;
}

HPROFILE Open(const Bytes& bytes) {
    PROFILE profile{PROFILE_MEMBUFFER, const_cast<uint8_t*>(bytes.data()), static_cast<DWORD>(bytes.size())};
    return OpenColorProfileW(&profile, PROFILE_READ, FILE_SHARE_READ, OPEN_EXISTING);
}

HTRANSFORM Create(HPROFILE from, HPROFILE to) {
    HPROFILE profiles[2] = {from, to};
    DWORD intents[2] = {INTENT_RELATIVE_COLORIMETRIC, INTENT_RELATIVE_COLORIMETRIC};
    return CreateMultiProfileTransform(profiles, 2, intents, 2, BEST_MODE, INDEX_DONT_CARE);
}

struct Case {
    const Bytes& (*from)();
    const Bytes& (*to)();
    BMFORMAT inFormat, outFormat;
    cmsUInt32Number lcmsIn, lcmsOut;
    size_t inChannels, outChannels, bytesPerChannel;
};

const Case kSrgbToFogra{Srgb, Fogra, BM_RGBTRIPLETS, BM_KYMCQUADS, TYPE_BGR_8, TYPE_CMYK_8, 3, 4, 1};
const Case kFograToSrgb{Fogra, Srgb, BM_KYMCQUADS, BM_RGBTRIPLETS, TYPE_CMYK_8, TYPE_BGR_8, 4, 3, 1};
const Case kSrgbToAdobe8{Srgb, AdobeRgb, BM_RGBTRIPLETS, BM_RGBTRIPLETS, TYPE_BGR_8, TYPE_BGR_8, 3, 3, 1};
const Case kSrgbToAdobe16{Srgb, AdobeRgb, BM_16b_RGB, BM_16b_RGB, TYPE_BGR_16, TYPE_BGR_16, 3, 3, 2};

void SetPixels(benchmark::State& state) {
    state.SetItemsProcessed(state.iterations() * int64_t{kWidth} * kHeight);
}

// lcms2 by itself: one transform, one call over the whole image, or with
// state.range(0) == 2 one call per half on two threads.
void Lcms2(benchmark::State& state, const Case& c) {
    if (c.from().empty() || c.to().empty()) return state.SkipWithError("profile not installed");
    const Bytes in = Image(c.inChannels, c.bytesPerChannel);
    Bytes out(size_t{kWidth} * kHeight * c.outChannels * c.bytesPerChannel);
    cmsHPROFILE from = cmsOpenProfileFromMem(c.from().data(), static_cast<cmsUInt32Number>(c.from().size()));
    cmsHPROFILE to = cmsOpenProfileFromMem(c.to().data(), static_cast<cmsUInt32Number>(c.to().size()));
    cmsHTRANSFORM transform =
        cmsCreateTransform(from, c.lcmsIn, to, c.lcmsOut, INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_HIGHRESPRECALC);
    const cmsUInt32Number inStride = kWidth * c.inChannels * c.bytesPerChannel;
    const cmsUInt32Number outStride = kWidth * c.outChannels * c.bytesPerChannel;
    const bool halves = state.range(0) == 2;
    const cmsUInt32Number top = halves ? kHeight / 2 : kHeight;
    for (auto _ : state) {
        std::thread second;
        if (halves)
            second = std::thread([&] {
                cmsDoTransformLineStride(transform, in.data() + size_t{top} * inStride,
                                         out.data() + size_t{top} * outStride, kWidth, kHeight - top, inStride,
                                         outStride, 0, 0);
            });
        cmsDoTransformLineStride(transform, in.data(), out.data(), kWidth, top, inStride, outStride, 0, 0);
        if (second.joinable()) second.join();
        benchmark::DoNotOptimize(out.data());
    }
    SetPixels(state);
    cmsDeleteTransform(transform);
    cmsCloseProfile(from);
    cmsCloseProfile(to);
}

// TranslateBitmapBits with TESK_TRANSLATE_THREADS=state.range(0); the
// result must equal lcms2's own, byte for byte, whatever the thread count.
void Translate(benchmark::State& state, const Case& c) {
    if (c.from().empty() || c.to().empty()) return state.SkipWithError("profile not installed");
    setenv("TESK_TRANSLATE_THREADS", std::to_string(state.range(0)).c_str(), 1);
    const Bytes in = Image(c.inChannels, c.bytesPerChannel);
    Bytes out(size_t{kWidth} * kHeight * c.outChannels * c.bytesPerChannel);
    HPROFILE from = Open(c.from()), to = Open(c.to());
    HTRANSFORM transform = Create(from, to);
    if (!transform) return state.SkipWithError("no transform");

    Bytes reference(out.size());
    {
        cmsHPROFILE f = cmsOpenProfileFromMem(c.from().data(), static_cast<cmsUInt32Number>(c.from().size()));
        cmsHPROFILE t = cmsOpenProfileFromMem(c.to().data(), static_cast<cmsUInt32Number>(c.to().size()));
        cmsHTRANSFORM x = cmsCreateTransform(f, c.lcmsIn, t, c.lcmsOut, INTENT_RELATIVE_COLORIMETRIC,
                                             cmsFLAGS_HIGHRESPRECALC);
        cmsDoTransform(x, in.data(), reference.data(), kWidth * kHeight);
        cmsDeleteTransform(x);
        cmsCloseProfile(f);
        cmsCloseProfile(t);
    }
    for (auto _ : state) {
        TranslateBitmapBits(transform, const_cast<uint8_t*>(in.data()), c.inFormat, kWidth, kHeight, 0, out.data(),
                            c.outFormat, 0, nullptr, 0);
        benchmark::DoNotOptimize(out.data());
    }
    SetPixels(state);
    state.counters["identical"] = out == reference ? 1 : 0;
    DeleteColorTransform(transform);
    CloseColorProfile(from);
    CloseColorProfile(to);
    unsetenv("TESK_TRANSLATE_THREADS");
}

// One TranslateBitmapBits call per row, as the command line converts images,
// for rows of state.range(0) pixels (about 12 megapixels in all) on
// state.range(1) threads; with state.range(2) set, a thread that never
// sleeps keeps another core busy meanwhile.
void RowByRow(benchmark::State& state, const Case& c) {
    if (c.from().empty() || c.to().empty()) return state.SkipWithError("profile not installed");
    const DWORD width = static_cast<DWORD>(state.range(0));
    const DWORD rows = static_cast<DWORD>((uint64_t{kWidth} * kHeight / 2) / width);
    setenv("TESK_TRANSLATE_THREADS", std::to_string(state.range(1)).c_str(), 1);
    const Bytes in = Image(c.inChannels, c.bytesPerChannel);
    Bytes out(size_t{width} * rows * c.outChannels * c.bytesPerChannel);
    HPROFILE from = Open(c.from()), to = Open(c.to());
    HTRANSFORM transform = Create(from, to);
    if (!transform) return state.SkipWithError("no transform");
    std::atomic<bool> stop{false};
    std::thread busy;
    if (state.range(2))
        busy = std::thread([&] {
            while (!stop.load(std::memory_order_relaxed)) {
            }
        });
    const size_t inRow = size_t{width} * c.inChannels * c.bytesPerChannel;
    const size_t outRow = size_t{width} * c.outChannels * c.bytesPerChannel;
    for (auto _ : state) {
        for (DWORD y = 0; y < rows; ++y)
            TranslateBitmapBits(transform, const_cast<uint8_t*>(in.data() + y * inRow), c.inFormat, width, 1, 0,
                                out.data() + y * outRow, c.outFormat, 0, nullptr, 0);
        benchmark::DoNotOptimize(out.data());
    }
    stop = true;
    if (busy.joinable()) busy.join();
    state.SetItemsProcessed(state.iterations() * int64_t{width} * rows);
    DeleteColorTransform(transform);
    CloseColorProfile(from);
    CloseColorProfile(to);
    unsetenv("TESK_TRANSLATE_THREADS");
}

// A first CreateMultiProfileTransform builds the lcms2 transform. To keep
// every iteration a first one, the destination cycles through more variants
// than the transform cache holds (their headers differ in the date only).
void CreateFirst(benchmark::State& state) {
    constexpr int kVariants = 24;
    std::vector<Bytes> variants(kVariants, Fogra());
    std::vector<HPROFILE> destinations;
    for (int i = 0; i < kVariants; ++i) {
        variants[i][35] = static_cast<uint8_t>(i);  // seconds of the creation date
        destinations.push_back(Open(variants[i]));
    }
    HPROFILE source = Open(Srgb());
    int next = 0;
    for (auto _ : state) {
        HTRANSFORM transform = Create(source, destinations[next++ % kVariants]);
        if (!transform) return state.SkipWithError("no transform");
        DeleteColorTransform(transform);
    }
    for (HPROFILE profile : destinations) CloseColorProfile(profile);
    CloseColorProfile(source);
}

// The same profiles, intents and flags again: the cached lcms2 transform.
void CreateSecond(benchmark::State& state) {
    HPROFILE source = Open(Srgb()), destination = Open(Fogra());
    DeleteColorTransform(Create(source, destination));
    for (auto _ : state) {
        HTRANSFORM transform = Create(source, destination);
        if (!transform) return state.SkipWithError("no transform");
        DeleteColorTransform(transform);
    }
    CloseColorProfile(source);
    CloseColorProfile(destination);
}

BENCHMARK_CAPTURE(Lcms2, SrgbToFogra39, kSrgbToFogra)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(Translate, SrgbToFogra39, kSrgbToFogra)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(Lcms2, Fogra39ToSrgb, kFograToSrgb)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(Translate, Fogra39ToSrgb, kFograToSrgb)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(Lcms2, SrgbToAdobeRgb8, kSrgbToAdobe8)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(Translate, SrgbToAdobeRgb8, kSrgbToAdobe8)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(Lcms2, SrgbToAdobeRgb16, kSrgbToAdobe16)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(Translate, SrgbToAdobeRgb16, kSrgbToAdobe16)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(RowByRow, SrgbToFogra39, kSrgbToFogra)
    ->ArgsProduct({{512, 1024, 2048, 4096, 6000}, {1, 2}, {0, 1}})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(CreateFirst)->Unit(benchmark::kMillisecond);
BENCHMARK(CreateSecond)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
