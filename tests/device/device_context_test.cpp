// CVDeviceContext: reference counting and interfaces, and drawing onto a
// memory device context with and without the display transform.
#include <cstring>
#include <filesystem>

#include <tesk/path.h>

#include "device/VDeviceContext.h"
#include "support/device_harness.h"

using namespace device_test;

namespace {

int IcmMode(HDC dc) { return ::SetICMMode(dc, ICM_QUERY); }

bool SameColour(COLORREF a, COLORREF b) { return (a & 0xFFFFFF) == (b & 0xFFFFFF); }

}  // namespace

TEST_F(DeviceTest, InterfacesAndReferenceCounts) {
    auto* object = new CVDeviceContext(nullptr, false);
    EXPECT_EQ(object->ReferenceCount(), 1u);

    void* found = nullptr;
    ASSERT_EQ(object->QueryInterface(IID_IVDeviceContext, &found), S_OK);
    EXPECT_EQ(found, static_cast<IVDeviceContext*>(object));
    EXPECT_EQ(object->ReferenceCount(), 2u);
    ASSERT_EQ(object->QueryInterface(IID_IVUnknown, &found), S_OK);
    EXPECT_EQ(found, static_cast<IVUnknown*>(object));
    EXPECT_EQ(object->ReferenceCount(), 3u);

    const GUID other = {0x2B159C2C, 0x3A9B, 0x48FE, {0xAF, 0xA0, 0xB2, 0x54, 0xD0, 0x21, 0x84, 0x07}};
    found = object;
    EXPECT_EQ(object->QueryInterface(other, &found), HRESULT(E_NOINTERFACE));
    EXPECT_EQ(found, nullptr);
    EXPECT_EQ(object->ReferenceCount(), 3u);

    // A copy is another object with the same context and a count of its own.
    CVDeviceContext copy(*object);
    EXPECT_EQ(copy.ReferenceCount(), 1u);
    EXPECT_EQ(copy.GetHDC(), object->GetHDC());
    EXPECT_EQ(copy.IsManaged(), object->IsManaged());

    IVDeviceContext* device = object;
    EXPECT_EQ(device->Release(), 2u);
    EXPECT_EQ(device->AddRef(), 3u);
    EXPECT_EQ(device->Release(), 2u);
    EXPECT_EQ(device->Release(), 1u);
    EXPECT_EQ(device->Release(), 0u);  // destroyed: ASan reports any later use
}

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

TEST_F(DeviceTest, SixteenBitImagesAreDrawnThroughAnEightBitCopy) {
    MemoryDC memory(4, 3);
    CRowIterator wide = PatternRGB16(4, 3);
    CRowIterator expected = DisplayTransformOf(Manager(), PatternRGB(4, 3));
    CVDeviceContext device(memory.Get(), false);
    RecordStretchDIBits();

    ASSERT_TRUE(device.DrawImage(&wide, nullptr, 0, 0, true, false));
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 4; ++x) EXPECT_TRUE(SameColour(memory.Pixel(x, y), PixelOf(expected, x, y)));
    ASSERT_TRUE(device.DrawImage(&wide, nullptr, 0, 0, false, false));
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 4; ++x) EXPECT_TRUE(SameColour(memory.Pixel(x, y), Colour(x, y)));
    ASSERT_EQ(StretchCalls().size(), 2u);
    for (const SStretchCall& call : StretchCalls()) {
        EXPECT_EQ(call.bitCount, 24);
        EXPECT_EQ(call.rop, DWORD(SRCCOPY));
    }
    // The source is left as it was.
    EXPECT_EQ(reinterpret_cast<const uint16_t*>(wide.GetRow(0))[0], uint16_t(GetBValue(Colour(0, 0)) << 8 | 0xF0));
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

    // Wholly outside the image, or empty: nothing drawn, and that is success.
    StretchCalls().clear();
    EXPECT_TRUE(device.DrawImage(&image, &block, 4, 0, true, false));
    EXPECT_TRUE(device.DrawImage(&image, &block, 0, 3, false, false));
    const RECT empty{2, 2, 2, 3};
    EXPECT_TRUE(device.DrawImage(&image, &empty, 0, 0, false, false));
    EXPECT_TRUE(device.DrawImage(nullptr, &block, 0, 0, true, false));
    EXPECT_TRUE(StretchCalls().empty());
}

TEST_F(DeviceTest, ImagesWithAlphaAreRefused) {
    MemoryDC memory(4, 4);
    CVDeviceContext device(memory.Get(), false);
    RecordStretchDIBits();
    for (EVPixelFormat format : {VPF_RGBA_8, VPF_RGBA_16, VPF_GREY_ALPHA_8}) {
        CRowIterator image;
        ASSERT_TRUE(CRowIteratorBands::Create(image, 2, 2, format));
        EXPECT_FALSE(device.DrawImage(&image, nullptr, 0, 0, true, false)) << format;
        EXPECT_FALSE(device.DrawImage(&image, nullptr, 0, 0, false, false)) << format;
        EXPECT_FALSE(device.DrawImageToPrinter(&image, 0, 0, 4, 4, 2, 2)) << format;
    }
    EXPECT_TRUE(device.DrawImageToPrinter(nullptr, 0, 0, 4, 4, 2, 2));
    EXPECT_TRUE(StretchCalls().empty());
}

TEST_F(DeviceTest, PrinterDrawingStretchesWithoutATransform) {
    MemoryDC memory(8, 6);
    CVDeviceContext device(memory.Get(), false);
    CRowIterator image = PatternRGB(4, 3);
    ASSERT_TRUE(device.DrawImageToPrinter(&image, 0, 0, 8, 6, 4, 3));
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 8; ++x) EXPECT_TRUE(SameColour(memory.Pixel(x, y), Colour(x / 2, y / 2)));
    CRowIterator wide = PatternRGB16(2, 2);
    EXPECT_FALSE(device.DrawImageToPrinter(&wide, 0, 0, 2, 2, 2, 2)) << "no 8-bit copy on this path";
}

TEST_F(DeviceTest, ImagesAndColoursGoThroughTheTransformInModeOneOnly) {
    CVDeviceContext device(nullptr, false);
    CRowIterator image = PatternRGB(4, 3), result;
    CRowIterator expected = DisplayTransformOf(Manager(), image);
    CRowIteratorBands::CreateCompatible(result, image);
    ASSERT_TRUE(device.ICMProcessImage(&image, &result, true));
    EXPECT_TRUE(SameColour(PixelOf(result, 2, 1), PixelOf(expected, 2, 1)));

    RGBQUAD in[2] = {{40, 128, 200, 7}, {10, 20, 30, 9}}, out[2] = {};
    EXPECT_TRUE(device.ProcessColors(in, out, 2));
    EXPECT_NE(std::memcmp(in, out, sizeof in), 0);

    Manager().SetMode(VCM_MODE_TABLES);
    std::memset(out, 0, sizeof out);
    EXPECT_FALSE(device.ProcessColors(in, out, 2));
    EXPECT_EQ(std::memcmp(in, out, sizeof in), 0) << "copied unchanged, fourth byte included";
    EXPECT_FALSE(device.ICMProcessImage(&image, &result, true));
    Manager().SetMode(VCM_MODE_OFF);
    EXPECT_FALSE(device.ICMProcessImage(&image, nullptr, false));
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
