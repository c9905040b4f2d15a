// Gamma ramps of the display.
#include <windows.h>

#include <array>

#include "gdi_test_support.h"

namespace tesk::test {
namespace {

using GammaTest = GdiTest;
using Ramp = std::array<WORD, 768>;

Ramp Identity() {
    Ramp ramp{};
    for (int c = 0; c < 3; ++c)
        for (int i = 0; i < 256; ++i) ramp[size_t(c * 256 + i)] = WORD(i * 257);
    return ramp;
}

TEST_F(GammaTest, StartsAsIdentityAndRoundTripsAcrossContexts) {
    HDC first = CreateDCW(L"DISPLAY", nullptr, nullptr, nullptr);
    Ramp ramp{};
    ASSERT_TRUE(GetDeviceGammaRamp(first, ramp.data()));
    EXPECT_EQ(ramp, Identity());

    Ramp warm{};
    for (int i = 0; i < 256; ++i) {
        warm[size_t(i)] = WORD(i * 257);
        warm[size_t(256 + i)] = WORD(i * 240);
        warm[size_t(512 + i)] = WORD(i * 200);
    }
    ASSERT_TRUE(SetDeviceGammaRamp(first, warm.data()));
    DeleteDC(first);

    // The ramp belongs to the display, not to the context that set it.
    HDC second = CreateDCW(nullptr, L"\\\\.\\DISPLAY1", nullptr, nullptr);
    Ramp read{};
    ASSERT_TRUE(GetDeviceGammaRamp(second, read.data()));
    EXPECT_EQ(read, warm);
    DeleteDC(second);
}

TEST_F(GammaTest, DecreasingRampsAreRefusedAndLeaveTheDisplayAlone) {
    HDC dc = CreateDCW(L"DISPLAY", nullptr, nullptr, nullptr);
    Ramp inverted = Identity();
    for (int i = 0; i < 256; ++i) inverted[size_t(512 + i)] = WORD((255 - i) * 257);
    SetLastError(0);
    EXPECT_TRUE(FailsWith(SetDeviceGammaRamp(dc, inverted.data()), ERROR_INVALID_PARAMETER));
    Ramp read{};
    ASSERT_TRUE(GetDeviceGammaRamp(dc, read.data()));
    EXPECT_EQ(read, Identity());

    // One step down, as a calibration table whose last value reads as zero gives, is taken.
    Ramp dropAtEnd = Identity();
    dropAtEnd[767] = 0;
    EXPECT_TRUE(SetDeviceGammaRamp(dc, dropAtEnd.data()));
    ASSERT_TRUE(GetDeviceGammaRamp(dc, read.data()));
    EXPECT_EQ(read, dropAtEnd);
    Ramp twoDrops = dropAtEnd;
    twoDrops[700] = 0;
    EXPECT_FALSE(SetDeviceGammaRamp(dc, twoDrops.data()));

    // A flat ramp (an all-zero saved ramp) is taken.
    Ramp zero{};
    EXPECT_TRUE(SetDeviceGammaRamp(dc, zero.data()));
    EXPECT_FALSE(SetDeviceGammaRamp(dc, nullptr));
    EXPECT_FALSE(GetDeviceGammaRamp(dc, nullptr));
    DeleteDC(dc);
}

TEST_F(GammaTest, OnlyDisplayContextsHaveRamps) {
    HDC memory = CreateCompatibleDC(nullptr);
    Ramp ramp = Identity();
    EXPECT_FALSE(GetDeviceGammaRamp(memory, ramp.data()));
    EXPECT_FALSE(SetDeviceGammaRamp(memory, ramp.data()));
    EXPECT_EQ(GetDeviceCaps(memory, COLORMGMTCAPS), CM_NONE);
    DeleteDC(memory);
}

}  // namespace
}  // namespace tesk::test
