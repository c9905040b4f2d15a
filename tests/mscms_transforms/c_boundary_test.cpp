// The platform's C boundary: exports driven with sizes no call can honour,
// and with callbacks that throw, fail the Windows way instead of unwinding
// into the caller or aborting the process.
#include <gtest/gtest.h>
#include <windows.h>

#include <climits>
#include <functional>
#include <new>

#include "transform_test_support.h"

namespace tesk::test {
namespace {

struct ImpossibleCall {
    const char* name;
    std::function<bool()> fails;  // true when the call reported failure
    DWORD error;
};

class CBoundaryTest : public IsolatedTest {
protected:
    void SetUp() override {
        PROFILE record{PROFILE_MEMBUFFER, srgb_.data(), static_cast<DWORD>(srgb_.size())};
        writable_ = OpenColorProfileW(&record, PROFILE_READWRITE, FILE_SHARE_READ, OPEN_EXISTING);
        ASSERT_NE(writable_, nullptr);
        HPROFILE pair[2] = {writable_, writable_};
        DWORD intent = INTENT_PERCEPTUAL;
        transform_ = CreateMultiProfileTransform(pair, 2, &intent, 1, BEST_MODE, INDEX_DONT_CARE);
        ASSERT_NE(transform_, nullptr);
        dc_ = CreateCompatibleDC(nullptr);
        ASSERT_NE(dc_, nullptr);
    }
    void TearDown() override {
        if (dc_) DeleteDC(dc_);
        if (transform_) DeleteColorTransform(transform_);
        if (writable_) CloseColorProfile(writable_);
    }
    static void Check(const ImpossibleCall& call) {
        SetLastError(0);
        EXPECT_TRUE(call.fails()) << call.name;
        EXPECT_EQ(GetLastError(), call.error) << call.name;
    }

    Bytes srgb_ = SrgbProfileBytes();
    HPROFILE writable_ = nullptr;
    HTRANSFORM transform_ = nullptr;
    HDC dc_ = nullptr;
};

TEST_F(CBoundaryTest, ImpossibleSizesFailTheWindowsWay) {
    uint8_t bytes[64] = {};
    DWORD size = 16, intent = INTENT_PERCEPTUAL;
    BOOL reference = FALSE;
    BITMAPINFO info{};
    info.bmiHeader = {sizeof(BITMAPINFOHEADER), 1, 1, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    DISPLAY_DEVICEW device{};
    COLORMATCHSETUPW setup{};
    const ImpossibleCall calls[] = {
        {"CreateMultiProfileTransform",
         [&] { return !CreateMultiProfileTransform(&writable_, 0xFFFFFFFF, &intent, 1, BEST_MODE, 0); },
         ERROR_INVALID_PARAMETER},
        {"TranslateBitmapBits",
         [&] {
             return !TranslateBitmapBits(transform_, bytes, BM_RGBTRIPLETS, 0xFFFFFFFF, 0xFFFFFFFF, 0, bytes,
                                         BM_RGBTRIPLETS, 0, nullptr, 0);
         },
         ERROR_INVALID_PARAMETER},
        {"CheckBitmapBits",
         [&] {
             return !CheckBitmapBits(transform_, bytes, BM_RGBTRIPLETS, 0xFFFFFFFF, 0xFFFFFFFF, 0, bytes, nullptr, 0);
         },
         ERROR_INVALID_PARAMETER},
        {"GetColorProfileElement",
         [&] { return !GetColorProfileElement(writable_, 'wtpt', 0xFFFFFFFF, &size, bytes, &reference); },
         ERROR_INVALID_PARAMETER},
        {"SetColorProfileElement",
         [&] { return !SetColorProfileElement(writable_, 'wtpt', 0xFFFFFFF0, &size, bytes); }, ERROR_NOT_ENOUGH_MEMORY},
        {"SetColorProfileElementSize", [&] { return !SetColorProfileElementSize(writable_, 'big ', 0xFFFFFFFF); },
         ERROR_NOT_ENOUGH_MEMORY},
        {"CreateCompatibleBitmap", [&] { return !CreateCompatibleBitmap(dc_, INT_MAX, INT_MAX); },
         ERROR_INVALID_PARAMETER},
        {"BitBlt", [&] { return !BitBlt(dc_, 0, 0, INT_MAX, INT_MAX, dc_, 0, 0, SRCCOPY); }, ERROR_INVALID_PARAMETER},
        {"SetDIBitsToDevice",
         [&] {
             return !SetDIBitsToDevice(dc_, 0, 0, 0xFFFFFFFF, 0xFFFFFFFF, 0, 0, 0, 1, bytes, &info, DIB_RGB_COLORS);
         },
         ERROR_INVALID_PARAMETER},
        {"StretchDIBits",
         [&] { return !StretchDIBits(dc_, 0, 0, INT_MAX, INT_MAX, 0, 0, 1, 1, bytes, &info, DIB_RGB_COLORS, SRCCOPY); },
         ERROR_INVALID_PARAMETER},
        {"EnumDisplayDevicesW", [&] { return !EnumDisplayDevicesW(nullptr, 0, &device, 0); }, ERROR_INVALID_PARAMETER},
        {"SetupColorMatchingW", [&] { return !SetupColorMatchingW(&setup); }, ERROR_INVALID_PARAMETER},
    };
    for (const ImpossibleCall& call : calls) Check(call);
}

// A C++ caller's callback that throws meets the guard, not the caller's frames.
TEST_F(CBoundaryTest, ExceptionFromACallbackBecomesAnError) {
    constexpr DWORD kWidth = 1024, kHeight = 1024;  // several bands, so the callback runs
    std::vector<uint8_t> pixels(size_t{kWidth} * kHeight * 3);
    const ImpossibleCall calls[] = {
        {"TranslateBitmapBits",
         [&] {
             return !TranslateBitmapBits(
                 transform_, pixels.data(), BM_RGBTRIPLETS, kWidth, kHeight, 0, pixels.data(), BM_RGBTRIPLETS, 0,
                 [](ULONG, ULONG, LPARAM) -> BOOL { throw std::bad_alloc(); }, 0);
         },
         ERROR_NOT_ENOUGH_MEMORY},
    };
    for (const ImpossibleCall& call : calls) Check(call);
}

}  // namespace
}  // namespace tesk::test
