// Gamma ramps of the display: the one held in memory, and a real X server's
// CRTC (Xorg with the dummy driver, which keeps the ramp it is given).
#include <windows.h>

#include <algorithm>
#include <array>
#include <memory>

#include "display.h"
#include "gdi_test_support.h"
#include "support/xorg_dummy_server.h"

namespace tesk::test {
namespace {

using Ramp = std::array<WORD, 768>;

Ramp Identity() {
    Ramp ramp{};
    for (int c = 0; c < 3; ++c)
        for (int i = 0; i < 256; ++i) ramp[size_t(c * 256 + i)] = WORD(i * 257);
    return ramp;
}

Ramp Read(HDC dc) {
    Ramp ramp{};
    EXPECT_TRUE(GetDeviceGammaRamp(dc, ramp.data()));
    return ramp;
}

// Parameter: on an Xorg server (true) or on the display held in memory.
class GammaTest : public GdiTest, public ::testing::WithParamInterface<bool> {
protected:
    void SetUp() override {
        GdiTest::SetUp();
        if (!GetParam()) return;
        server_ = std::make_unique<XorgDummyServer>(640, 480);
        if (!server_->Running()) GTEST_SKIP() << server_->Problem();
        setenv("DISPLAY", server_->Name().c_str(), 1);
        display::Reset();
        ASSERT_STREQ(display::Current().Kind(), "x11");
    }
    void TearDown() override {
        display::Reset();  // closes the module's connection before the server goes
        server_.reset();
        GdiTest::TearDown();
    }

    // The ramp the display holds: on Xorg the CRTC's, as the server tells it.
    Ramp Held() {
        Ramp ramp{};
        if (!server_) {
            HDC dc = CreateDCW(L"DISPLAY", nullptr, nullptr, nullptr);
            ramp = Read(dc);
            DeleteDC(dc);
        } else if (std::vector<uint16_t> crtc = server_->CrtcRamp(); crtc.size() == ramp.size()) {
            std::copy(crtc.begin(), crtc.end(), ramp.begin());
        } else {
            ADD_FAILURE() << "a CRTC ramp of " << crtc.size() << " values";
        }
        return ramp;
    }

    std::unique_ptr<XorgDummyServer> server_;
};

TEST_P(GammaTest, ARampSetBelongsToTheDisplayAndReadsBackAsSet) {
    HDC first = CreateDCW(L"DISPLAY", nullptr, nullptr, nullptr);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(Read(first), Held());
    if (!GetParam()) {
        EXPECT_EQ(Held(), Identity());
    }

    Ramp warm{};
    for (int i = 0; i < 256; ++i) {
        warm[size_t(i)] = WORD(i * 257);
        warm[size_t(256 + i)] = WORD(i * 240);
        warm[size_t(512 + i)] = WORD(i * 200);
    }
    ASSERT_TRUE(SetDeviceGammaRamp(first, warm.data()));
    DeleteDC(first);
    EXPECT_EQ(Held(), warm);

    // Not the context's: another one on the same display reads it.
    HDC second = CreateDCW(nullptr, L"\\\\.\\DISPLAY1", nullptr, nullptr);
    EXPECT_EQ(Read(second), warm);
    DeleteDC(second);
}

TEST_P(GammaTest, DecreasingRampsAreRefusedAndLeaveTheDisplayAlone) {
    HDC dc = CreateDCW(L"DISPLAY", nullptr, nullptr, nullptr);
    ASSERT_TRUE(SetDeviceGammaRamp(dc, Identity().data()));
    Ramp inverted = Identity();
    for (int i = 0; i < 256; ++i) inverted[size_t(512 + i)] = WORD((255 - i) * 257);
    SetLastError(0);
    EXPECT_TRUE(FailsWith(SetDeviceGammaRamp(dc, inverted.data()), ERROR_INVALID_PARAMETER));
    EXPECT_EQ(Held(), Identity());

    // One step down, as a calibration table whose last value reads as zero gives, is taken.
    Ramp dropAtEnd = Identity();
    dropAtEnd[767] = 0;
    EXPECT_TRUE(SetDeviceGammaRamp(dc, dropAtEnd.data()));
    EXPECT_EQ(Held(), dropAtEnd);
    Ramp twoDrops = dropAtEnd;
    twoDrops[700] = 0;
    EXPECT_FALSE(SetDeviceGammaRamp(dc, twoDrops.data()));
    EXPECT_EQ(Held(), dropAtEnd);

    // A flat ramp (an all-zero saved ramp) is taken.
    Ramp zero{};
    EXPECT_TRUE(SetDeviceGammaRamp(dc, zero.data()));
    EXPECT_EQ(Held(), zero);
    EXPECT_FALSE(SetDeviceGammaRamp(dc, nullptr));
    EXPECT_FALSE(GetDeviceGammaRamp(dc, nullptr));
    DeleteDC(dc);
}

INSTANTIATE_TEST_SUITE_P(Displays, GammaTest, ::testing::Values(false, true),
                         [](const ::testing::TestParamInfo<bool>& info) { return info.param ? "Xorg" : "InMemory"; });

using GammaContextTest = GdiTest;

TEST_F(GammaContextTest, OnlyDisplayContextsHaveRamps) {
    HDC memory = CreateCompatibleDC(nullptr);
    Ramp ramp = Identity();
    EXPECT_FALSE(GetDeviceGammaRamp(memory, ramp.data()));
    EXPECT_FALSE(SetDeviceGammaRamp(memory, ramp.data()));
    EXPECT_EQ(GetDeviceCaps(memory, COLORMGMTCAPS), CM_NONE);
    DeleteDC(memory);
}

}  // namespace
}  // namespace tesk::test
