// Rows, strides, progress callbacks, threads and bad arguments of
// TranslateBitmapBits. 8-bit RGB to CMYK goes through the platform's own
// interpolation, allowed to differ from lcms2 by one code value on 0.1 % of
// samples; measured, it differs on none, so these tests ask for lcms2's bytes.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>
#include <cstdlib>
#include <vector>

#include "transform_test_support.h"

namespace tesk::test {
namespace {

class BitmapRows : public IsolatedTest {
protected:
    void TearDown() override { unsetenv("TESK_TRANSLATE_THREADS"); }

    Bytes srgb_ = SrgbProfileBytes();
    Bytes fogra_ = FograProfile();
};

TEST_F(BitmapRows, PaddingBetweenRowsIsNeitherReadNorWritten) {
    Transform transform = MakeTransform({&srgb_, &fogra_}, {INTENT_RELATIVE_COLORIMETRIC});
    const DWORD width = 5, height = 4, inStride = 17, outStride = 23;
    Bytes in = NoiseBytes(inStride * height, 1);
    Bytes out(outStride * height, 0xEE);
    ASSERT_TRUE(TranslateBitmapBits(transform.Get(), in.data(), BM_RGBTRIPLETS, width, height, inStride, out.data(),
                                    BM_KYMCQUADS, outStride, nullptr, 0));
    for (DWORD y = 0; y < height; ++y) {
        Bytes row(in.begin() + y * inStride, in.begin() + y * inStride + width * 3);
        const Bytes expected = LcmsReference(srgb_, fogra_, TYPE_BGR_8, TYPE_CMYK_8, INTENT_RELATIVE_COLORIMETRIC,
                                             cmsFLAGS_HIGHRESPRECALC, row, width);
        EXPECT_EQ(Bytes(out.begin() + y * outStride, out.begin() + y * outStride + width * 4), expected) << y;
        for (DWORD x = width * 4; x < outStride; ++x) EXPECT_EQ(out[y * outStride + x], 0xEE);
    }
}

TEST_F(BitmapRows, ZeroStrideMeansRowsPaddedToFourBytes) {
    Transform transform = MakeTransform({&srgb_, &srgb_}, {INTENT_PERCEPTUAL});
    // 3 pixels of 3 bytes: 9 bytes a row, 12 with padding.
    Bytes in = NoiseBytes(12 * 3, 2);
    Bytes packed(36, 0), padded(36, 0xEE);
    ASSERT_TRUE(TranslateBitmapBits(transform.Get(), in.data(), BM_RGBTRIPLETS, 3, 3, 12, packed.data(),
                                    BM_RGBTRIPLETS, 12, nullptr, 0));
    ASSERT_TRUE(TranslatePacked(transform, in.data(), BM_RGBTRIPLETS, 3, 3, padded.data(), BM_RGBTRIPLETS));
    for (size_t y = 0; y < 3; ++y) {
        for (size_t x = 0; x < 9; ++x) EXPECT_EQ(padded[y * 12 + x], packed[y * 12 + x]);
        for (size_t x = 9; x < 12; ++x) EXPECT_EQ(padded[y * 12 + x], 0xEE);
    }
}

TEST_F(BitmapRows, StrideShorterThanARowOnlyPassesForOneRow) {
    Transform transform = MakeTransform({&srgb_, &srgb_}, {INTENT_PERCEPTUAL});
    Bytes in(30), out(30);
    // One row: the stride never steps anywhere (palette tables are passed so).
    EXPECT_TRUE(TranslateBitmapBits(transform.Get(), in.data(), BM_RGBTRIPLETS, 10, 1, 10, out.data(),
                                    BM_RGBTRIPLETS, 10, nullptr, 0));
    EXPECT_FALSE(TranslateBitmapBits(transform.Get(), in.data(), BM_RGBTRIPLETS, 5, 2, 10, out.data(),
                                     BM_RGBTRIPLETS, 15, nullptr, 0));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
}

TEST_F(BitmapRows, InPlaceTranslationMatchesSeparateBuffers) {
    Transform transform = MakeTransform({&srgb_, &fogra_, &srgb_}, {INTENT_RELATIVE_COLORIMETRIC});
    setenv("TESK_TRANSLATE_THREADS", "2", 1);
    const DWORD width = 64, height = 50;
    Bytes image = NoiseBytes(width * 4 * height, 3);
    Bytes separate(image.size());
    ASSERT_TRUE(TranslatePacked(transform, image.data(), BM_xRGBQUADS, width, height, separate.data(), BM_xRGBQUADS));
    ASSERT_TRUE(TranslatePacked(transform, image.data(), BM_xRGBQUADS, width, height, image.data(), BM_xRGBQUADS));
    EXPECT_EQ(image, separate);
}

struct Progress {
    std::vector<std::pair<ULONG, ULONG>> calls;
    size_t cancelAt = SIZE_MAX;
};

BOOL WINAPI RecordProgress(ULONG max, ULONG current, LPARAM data) {
    auto* progress = reinterpret_cast<Progress*>(data);
    progress->calls.emplace_back(max, current);
    return progress->calls.size() < progress->cancelAt;
}

TEST_F(BitmapRows, CallbackRunsBetweenRowsAndCanCancel) {
    Transform transform = MakeTransform({&srgb_, &srgb_}, {INTENT_PERCEPTUAL});
    // Wide rows so that each band of the progress callback is one row.
    const DWORD width = 1 << 18, height = 4;
    Bytes in = NoiseBytes(size_t{width} * 3 * height, 4);
    Bytes out(in.size(), 0xEE);

    Progress all;
    ASSERT_TRUE(TranslateBitmapBits(transform.Get(), in.data(), BM_RGBTRIPLETS, width, height, 0, out.data(),
                                    BM_RGBTRIPLETS, 0, RecordProgress, reinterpret_cast<LPARAM>(&all)));
    EXPECT_EQ(all.calls, (std::vector<std::pair<ULONG, ULONG>>{{4, 1}, {4, 2}, {4, 3}}));

    Progress cancelling;
    cancelling.cancelAt = 2;
    Bytes partial(in.size(), 0xEE);
    SetLastError(0);
    EXPECT_FALSE(TranslateBitmapBits(transform.Get(), in.data(), BM_RGBTRIPLETS, width, height, 0, partial.data(),
                                     BM_RGBTRIPLETS, 0, RecordProgress, reinterpret_cast<LPARAM>(&cancelling)));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_CANCELLED});
    EXPECT_EQ(cancelling.calls.size(), 2u);
    // Rows 0 and 1 were done before the answer came; rows 2 and 3 were not.
    const size_t rowBytes = size_t{width} * 3;
    EXPECT_TRUE(std::equal(out.begin(), out.begin() + 2 * rowBytes, partial.begin()));
    EXPECT_TRUE(std::all_of(partial.begin() + 2 * rowBytes, partial.end(), [](uint8_t b) { return b == 0xEE; }));
}

TEST_F(BitmapRows, ThreadsGiveTheSameBytesAsOneThreadAndAsLcms2) {
    Transform transform = MakeTransform({&srgb_, &fogra_}, {INTENT_RELATIVE_COLORIMETRIC});
    const DWORD width = 1201, height = 901;  // over a megapixel, odd sizes
    const Bytes in = NoiseBytes(size_t{width} * 3 * height, 5);
    auto run = [&](const char* threads, PBMCALLBACKFN callback) {
        if (threads)
            setenv("TESK_TRANSLATE_THREADS", threads, 1);
        else
            unsetenv("TESK_TRANSLATE_THREADS");
        Bytes out(size_t{width} * 4 * height);
        Progress progress;
        EXPECT_TRUE(TranslateBitmapBits(transform.Get(), const_cast<uint8_t*>(in.data()), BM_RGBTRIPLETS, width,
                                        height, width * 3, out.data(), BM_KYMCQUADS, width * 4, callback,
                                        reinterpret_cast<LPARAM>(&progress)));
        return out;
    };
    const Bytes single = run("1", nullptr);
    EXPECT_EQ(single, LcmsReference(srgb_, fogra_, TYPE_BGR_8, TYPE_CMYK_8, INTENT_RELATIVE_COLORIMETRIC,
                                    cmsFLAGS_HIGHRESPRECALC, in, size_t{width} * height));
    EXPECT_TRUE(run("2", nullptr) == single);
    EXPECT_TRUE(run("3", RecordProgress) == single);
    EXPECT_TRUE(run(nullptr, nullptr) == single);
}

TEST_F(BitmapRows, OneLongRowSplitBetweenThreadsGivesTheSameBytes) {
    Transform transform = MakeTransform({&srgb_, &fogra_}, {INTENT_RELATIVE_COLORIMETRIC});
    const DWORD width = 6007;  // one row, not a multiple of any split
    const Bytes in = NoiseBytes(size_t{width} * 3, 9);
    const Bytes reference = LcmsReference(srgb_, fogra_, TYPE_BGR_8, TYPE_CMYK_8, INTENT_RELATIVE_COLORIMETRIC,
                                          cmsFLAGS_HIGHRESPRECALC, in, width);
    for (const char* threads : {"1", "2", "3"}) {
        setenv("TESK_TRANSLATE_THREADS", threads, 1);
        Bytes out(size_t{width} * 4);
        ASSERT_TRUE(TranslatePacked(transform, in.data(), BM_RGBTRIPLETS, width, 1, out.data(), BM_KYMCQUADS));
        EXPECT_TRUE(out == reference) << threads << " threads";
    }
    // In place with one layout, each pixel only overwrites itself.
    Transform same = MakeTransform({&srgb_, &srgb_}, {INTENT_PERCEPTUAL});
    Bytes inPlace = in;
    setenv("TESK_TRANSLATE_THREADS", "1", 1);
    Bytes single = in;
    ASSERT_TRUE(TranslatePacked(same, single.data(), BM_RGBTRIPLETS, width, 1, single.data(), BM_RGBTRIPLETS));
    setenv("TESK_TRANSLATE_THREADS", "2", 1);
    ASSERT_TRUE(TranslatePacked(same, inPlace.data(), BM_RGBTRIPLETS, width, 1, inPlace.data(), BM_RGBTRIPLETS));
    EXPECT_TRUE(inPlace == single);
}

// Rows one call at a time from two callers at once, on a machine kept busy:
// pool threads often arrive late or not at all, and every piece of every row
// must still be done exactly once and before the call returns.
TEST_F(BitmapRows, RowByRowFromTwoCallersOnABusyMachine) {
    Transform transform = MakeTransform({&srgb_, &fogra_}, {INTENT_RELATIVE_COLORIMETRIC});
    const DWORD width = 3001, rows = 300;
    const Bytes in = NoiseBytes(size_t{width} * 3 * rows, 11);
    const Bytes reference = LcmsReference(srgb_, fogra_, TYPE_BGR_8, TYPE_CMYK_8, INTENT_RELATIVE_COLORIMETRIC,
                                          cmsFLAGS_HIGHRESPRECALC, in, size_t{width} * rows);
    setenv("TESK_TRANSLATE_THREADS", "2", 1);
    std::atomic<bool> stop{false};
    auto spin = [&] {
        while (!stop.load(std::memory_order_relaxed)) {
        }
    };
    std::thread busy(spin), busier(spin);
    auto translateRows = [&](DWORD first, Bytes& out) {
        for (DWORD y = first; y < rows; y += 2)
            if (!TranslatePacked(transform, in.data() + size_t{y} * width * 3, BM_RGBTRIPLETS, width, 1,
                                 out.data() + size_t{y} * width * 4, BM_KYMCQUADS))
                return;
    };
    Bytes even(reference.size()), odd(reference.size());
    std::thread second([&] { translateRows(1, odd); });
    translateRows(0, even);
    second.join();
    stop = true;
    busy.join();
    busier.join();
    for (DWORD y = 0; y < rows; ++y) {
        const Bytes& out = y % 2 ? odd : even;
        const size_t begin = size_t{y} * width * 4, end = begin + size_t{width} * 4;
        ASSERT_TRUE(std::equal(out.begin() + std::ptrdiff_t(begin), out.begin() + std::ptrdiff_t(end),
                               reference.begin() + std::ptrdiff_t(begin)))
            << "row " << y;
    }
}

TEST_F(BitmapRows, SixteenBitImagesMatchLcms2) {
    const Bytes adobe = InstalledProfile("/usr/share/color/icc/colord/AdobeRGB1998.icc");
    if (adobe.empty()) GTEST_SKIP() << "colord-data's AdobeRGB1998.icc is not installed";
    Transform transform = MakeTransform({&srgb_, &adobe}, {INTENT_RELATIVE_COLORIMETRIC});
    setenv("TESK_TRANSLATE_THREADS", "2", 1);
    const DWORD width = 300, height = 200;
    const Bytes in = NoiseBytes(size_t{width} * 6 * height, 6);
    Bytes out(in.size());
    ASSERT_TRUE(TranslatePacked(transform, in.data(), BM_16b_RGB, width, height, out.data(), BM_16b_RGB));
    EXPECT_TRUE(out == LcmsReference(srgb_, adobe, TYPE_BGR_16, TYPE_BGR_16, INTENT_RELATIVE_COLORIMETRIC,
                                     cmsFLAGS_HIGHRESPRECALC, in, size_t{width} * height));
}

TEST_F(BitmapRows, BadHandlesAndPointersFailCleanly) {
    Transform transform = MakeTransform({&srgb_, &srgb_}, {INTENT_PERCEPTUAL});
    Bytes in(12), out(12);
    OpenedProfile profile(srgb_);
    HTRANSFORM closed = MakeTransform({&srgb_, &srgb_}, {INTENT_PERCEPTUAL}).Get();  // deleted on return
    for (HTRANSFORM bad : {HTRANSFORM{}, closed, HTRANSFORM(profile.Get()), reinterpret_cast<HTRANSFORM>(0x1234)}) {
        SetLastError(0);
        EXPECT_FALSE(TranslateBitmapBits(bad, in.data(), BM_RGBTRIPLETS, 1, 1, 0, out.data(), BM_RGBTRIPLETS, 0,
                                         nullptr, 0));
        EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_HANDLE});
    }
    EXPECT_FALSE(TranslatePacked(transform, nullptr, BM_RGBTRIPLETS, 1, 1, out.data(), BM_RGBTRIPLETS));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_FALSE(TranslatePacked(transform, in.data(), BM_RGBTRIPLETS, 1, 1, nullptr, BM_RGBTRIPLETS));
    // A row too long for the 32-bit strides lcms2 takes.
    EXPECT_FALSE(TranslatePacked(transform, in.data(), BM_xRGBQUADS, 0x40000000, 1, out.data(), BM_xRGBQUADS));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
    // Nothing to do is no failure.
    EXPECT_TRUE(TranslatePacked(transform, in.data(), BM_RGBTRIPLETS, 0, 5, out.data(), BM_RGBTRIPLETS));
}

}  // namespace
}  // namespace tesk::test
