// CVDeviceContext drawing onto memory and printer device contexts with and
// without the display transform.
#include <filesystem>

#include <tesk/path.h>

#include "device/VDeviceContext.h"
#include "support/device_harness.h"

using namespace device_test;

namespace {

int IcmMode(HDC dc) { return ::SetICMMode(dc, ICM_QUERY); }

bool SameColour(COLORREF a, COLORREF b) { return (a & 0xFFFFFF) == (b & 0xFFFFFF); }

}  // namespace

TEST_F(DeviceTest, ManagedDrawingShowsTheDisplayTransformAndUnmanagedTheImage) {
    MemoryDC memory(4, 3);
    CRowIterator image = PatternRGB(4, 3);
    CRowIterator expected = DisplayTransformOf(Manager(), image);
    CVDeviceContext device(memory.Get(), false);

    ::SetICMMode(memory.Get(), ICM_ON);
    ASSERT_TRUE(device.DrawImage(&image, nullptr, 0, 0, true, false));
    EXPECT_EQ(IcmMode(memory.Get()), ICM_DONE_OUTSIDEDC);
    bool moved = false;
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 4; ++x) {
            EXPECT_TRUE(SameColour(memory.Pixel(x, y), PixelOf(expected, x, y))) << x << "," << y;
            moved |= !SameColour(PixelOf(expected, x, y), Colour(x, y));
        }
    EXPECT_TRUE(moved) << "gamma 2.2 to 1.8 must move mid-tones";

    ASSERT_TRUE(device.DrawImage(&image, nullptr, 0, 0, false, false));
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 4; ++x) EXPECT_TRUE(SameColour(memory.Pixel(x, y), Colour(x, y))) << x << "," << y;

    // Mode 0 draws the image as it is even when management is asked for.
    Manager().SetMode(VCM_MODE_OFF);
    ::SetICMMode(memory.Get(), ICM_ON);
    ASSERT_TRUE(device.DrawImage(&expected, nullptr, 0, 0, true, false));
    EXPECT_EQ(IcmMode(memory.Get()), ICM_DONE_OUTSIDEDC);
    EXPECT_TRUE(SameColour(memory.Pixel(1, 1), PixelOf(expected, 1, 1)));
}

TEST_F(DeviceTest, SourceRectanglesClampAndClip) {
    MemoryDC memory(8, 8);
    CRowIterator image = PatternRGB(4, 3);
    CVDeviceContext device(memory.Get(), false);
    RecordStretchDIBits();

    // A negative origin: read as 0 with the clamp flag, passed on without it.
    const RECT left{-10, 1, -8, 3};
    ASSERT_TRUE(device.DrawImage(&image, &left, 1, 0, false, true));
    EXPECT_TRUE(SameColour(memory.Pixel(1, 0), Colour(0, 1)));
    EXPECT_TRUE(SameColour(memory.Pixel(2, 1), Colour(1, 2)));
    device.DrawImage(&image, &left, 1, 0, false, false);
    ASSERT_EQ(StretchCalls().size(), 2u);
    for (const SStretchCall& call : StretchCalls()) {
        EXPECT_EQ(call.destination.left, 1);
        EXPECT_EQ(call.destination.top, 0);
        EXPECT_EQ(call.destination.right, 2);  // width
        EXPECT_EQ(call.destination.bottom, 2);  // height
        EXPECT_EQ(call.source.top, 1);
    }
    EXPECT_EQ(StretchCalls()[0].source.left, 0);
    EXPECT_EQ(StretchCalls()[1].source.left, -10);

    // The destination is clipped to the image's own rectangle: 3 - 2 = 1 row left.
    StretchCalls().clear();
    const RECT block{1, 0, 4, 3};
    ASSERT_TRUE(device.DrawImage(&image, &block, 2, 2, false, false));
    ASSERT_EQ(StretchCalls().size(), 1u);
    EXPECT_EQ(StretchCalls()[0].destination.right, 2);  // x 2..4
    EXPECT_EQ(StretchCalls()[0].destination.bottom, 1); // y 2..3
    EXPECT_EQ(StretchCalls()[0].source.right, 2);
    EXPECT_EQ(StretchCalls()[0].source.bottom, 1);
}

TEST_F(DeviceTest, AManagedContextIsSwitchedToThePrinterProfileAndBack) {
    // A printer whose driver profile is installed in the colour directory.
    std::filesystem::copy_file(tesk::test::DataPath("ColorProfile/ISO Coated (FOGRA39).icc"),
                               ColorDir() + "/Press.icc");
    ::setenv("TESK_TEST_PRINTERS", ("Office=" + ColorDir() + "/Press.icc").c_str(), 1);
    ::setenv("TESK_TEST_PRINTER_SPOOL", (env_.Root() + "/spool").c_str(), 1);
    Manager().SetDefaultPrinterW(L"Office");
    HDC printer = ::CreateDCW(nullptr, L"Office", nullptr, nullptr);
    ASSERT_NE(printer, nullptr);

    auto* device = new CVDeviceContext(printer, true);
    EXPECT_EQ(IcmMode(printer), ICM_ON);
    EXPECT_EQ(std::filesystem::path(tesk::path::ToNative(colormgr_test::GdiICMProfile(printer).c_str())).filename(),
              "Press.icc");
    // The context matches by itself: DrawImage leaves its mode alone.
    MemoryDC memory(4, 3);
    CRowIterator image = PatternRGB(4, 3);
    CVDeviceContext memoryDevice(memory.Get(), true);
    ::SetICMMode(memory.Get(), ICM_OFF);
    ASSERT_TRUE(memoryDevice.DrawImage(&image, nullptr, 0, 0, true, false));
    EXPECT_EQ(IcmMode(memory.Get()), ICM_OFF);
    EXPECT_TRUE(SameColour(memory.Pixel(3, 2), Colour(3, 2)));

    EXPECT_EQ(device->Release(), 0u);
    EXPECT_EQ(IcmMode(printer), ICM_OFF);

    // Other modes: neither set up nor cleaned up.
    Manager().SetMode(VCM_MODE_TABLES);
    ::SetICMMode(printer, ICM_DONE_OUTSIDEDC);
    delete new CVDeviceContext(printer, true);
    EXPECT_EQ(IcmMode(printer), ICM_DONE_OUTSIDEDC);
    ::DeleteDC(printer);
}
