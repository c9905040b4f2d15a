#include <gtest/gtest.h>

#include <cstring>
#include <utility>
#include <vector>

#include "host/imaging/DibIterator.h"
#include "host/imaging/GammaCorrect.h"
#include "host/imaging/RowIteratorBands.h"
#include "host/imaging/StatusControl.h"

TEST(Palette, GreyscaleAndNearestEntry) {
    CVPalette grey;
    grey.CreateGreyscale();
    ASSERT_EQ(grey.GetCount(), 256);
    for (int i = 0; i < 256; ++i) ASSERT_EQ(grey[i].rgbGreen, i);
    grey.CreateGreyscale(16);
    EXPECT_EQ(grey[1].rgbRed, 17);
    EXPECT_EQ(grey[15].rgbBlue, 255);
    EXPECT_TRUE(grey.IsGreyscale());

    // Nearest entry: low bytes only, the first of equals.
    const RGBQUAD entries[] = {{0, 0, 200, 0}, {0, 0, 0, 0}, {255, 255, 255, 0}, {0, 0, 200, 0}};
    CVPalette palette(entries, 4);
    EXPECT_EQ(palette.FindNearestEntry(190, 10, 5), 0);  // red 190 lies nearest to red 200
    EXPECT_EQ(palette.FindNearestEntry(0x12300 | 200, 0x100, 0), 0);  // only low bytes count
    EXPECT_EQ(palette.FindNearestEntry(20, 20, 20), 1);
    EXPECT_EQ(palette.FindNearestEntry(250, 250, 240), 2);

    grey.CreateGreyscale();
    const COLORREF c = RGB(10, 130, 200);
    EXPECT_EQ(grey.FindNearestEntry(int(c), int(c >> 8), int(c >> 16)), 113);  // (10+130+200)/3 rounded
    EXPECT_EQ(CVPalette().FindNearestEntry(1, 2, 3), -1);
    EXPECT_FALSE(palette.Set(entries, 257));
    EXPECT_EQ(palette.GetCount(), 4);
}

namespace {

struct CRecordingSink : IVProgressSink {
    std::vector<std::pair<long long, long long>> calls;
    void OnProgress(long long position, long long range) override { calls.emplace_back(position, range); }
};

}  // namespace

TEST(StatusControl, ReportsEachThousandthOnceAndTheEnd) {
    CRecordingSink sink;
    CStatusControl root(&sink);
    root.SetProgressRange(6000);
    for (int y = 0; y <= 6000; ++y) root.SetProgress(y);
    ASSERT_EQ(sink.calls.size(), 1001u);
    EXPECT_EQ(sink.calls.front(), std::make_pair(0LL, 6000LL));
    EXPECT_EQ(sink.calls[500], std::make_pair(3000LL, 6000LL));
    EXPECT_EQ(sink.calls.back(), std::make_pair(6000LL, 6000LL));

    sink.calls.clear();
    root.SetProgressRange(0);  // an empty image: nothing to show
    root.SetProgress(0);
    EXPECT_TRUE(sink.calls.empty());
    root.SetProgressRange(4);
    root.SetProgress(9);  // clamped
    EXPECT_EQ(sink.calls.back(), std::make_pair(4LL, 4LL));
}

TEST(StatusControl, ChildReportsThroughItsParent) {
    CRecordingSink sink;
    CStatusControl root(&sink);
    {
        CStatusControl child(&root);
        child.SetProgressRange(10);
        child.SetProgress(5);
    }
    EXPECT_EQ(root.GetProgressRange(), 10);
    EXPECT_EQ(sink.calls.back(), std::make_pair(5LL, 10LL));

    root.SetProgressRange(100);
    CStatusControl second(&root, 50, 100);  // the second half of the work
    second.SetProgressRange(4);
    second.SetProgress(2);
    EXPECT_EQ(sink.calls.back(), std::make_pair(75LL, 100LL));

    CStatusControl orphan(static_cast<CStatusControl*>(nullptr));
    orphan.SetProgressRange(3);
    orphan.SetProgress(2);  // reports nowhere, and does not crash
    EXPECT_EQ(orphan.GetProgress(), 2);
}

namespace {

struct STables {
    BYTE red[256], green[256], blue[256];
    STables() {
        for (int i = 0; i < 256; ++i) red[i] = BYTE(255 - i), green[i] = BYTE(i / 2), blue[i] = BYTE(i);
    }
};

}  // namespace

TEST(GammaCorrect, EachChannelThroughItsOwnTable) {
    const STables t;
    CRowIterator image;
    const CColorRef colour(200, 100, 50, 77);
    ASSERT_TRUE(CRowIteratorBands::Create(image, 2, 2, VPF_RGBA_8, nullptr, &colour));
    ASSERT_TRUE(GammaCorrectDIBInplace(image, t.red, t.green, t.blue));
    // Blue through identity, green halved, red inverted, alpha untouched.
    EXPECT_EQ(std::vector<BYTE>(image.GetRow(1, 1), image.GetRow(1, 1) + 4), (std::vector<BYTE>{50, 50, 55, 77}));

    ASSERT_TRUE(CRowIteratorBands::Create(image, 1, 1, VPF_GREY_ALPHA_8, nullptr, &colour));
    const BYTE grey = image.GetRow(0)[0];
    ASSERT_TRUE(GammaCorrectDIBInplace(image, t.red, t.green, t.blue));
    EXPECT_EQ(image.GetRow(0)[0], grey / 2);
    EXPECT_EQ(image.GetRow(0)[1], 77);
}

TEST(GammaCorrect, SixteenBitIdentityIsExactAndEndsHold) {
    BYTE identity[256], half[256];
    for (int i = 0; i < 256; ++i) identity[i] = BYTE(i), half[i] = BYTE(i / 2);
    CRowIterator image;
    ASSERT_TRUE(CRowIteratorBands::Create(image, 4, 1, VPF_RGB_16));
    const WORD values[12] = {0, 1, 256, 257, 32767, 40000, 65534, 65535, 12345, 0x00FF, 0xFF00, 7};
    std::memcpy(image.GetRow(0), values, sizeof values);
    ASSERT_TRUE(GammaCorrectDIBInplace(image, identity, identity, identity));
    EXPECT_EQ(std::memcmp(image.GetRow(0), values, sizeof values), 0);

    ASSERT_TRUE(GammaCorrectDIBInplace(image, half, half, half));
    WORD out[12];
    std::memcpy(out, image.GetRow(0), sizeof out);
    EXPECT_EQ((std::vector<WORD>{out[0], out[3], out[7]}), (std::vector<WORD>{0, 0, 127 * 257}));  // 257 is entry 1
    EXPECT_NEAR(out[4], 32767 / 2, 257);
}

TEST(GammaCorrect, IndexedImagesChangeTheirPalette) {
    const STables t;
    const RGBQUAD entries[2] = {{10, 20, 30, 0}, {0, 0, 0, 9}};
    CVPalette palette(entries, 2);
    CRowIterator image;
    ASSERT_TRUE(CRowIteratorBands::Create(image, 8, 1, VPF_INDEXED_1, &palette));
    image.GetRow(0)[0] = 0x5A;
    ASSERT_TRUE(GammaCorrectDIBInplace(image, t.red, t.green, t.blue));
    EXPECT_EQ(image.GetRow(0)[0], 0x5A);
    const RGBQUAD& first = (*image.GetPalette())[0];
    EXPECT_EQ((std::vector<int>{first.rgbRed, first.rgbGreen, first.rgbBlue}), (std::vector<int>{225, 10, 10}));
    EXPECT_EQ((*image.GetPalette())[1].rgbReserved, 9);

    CDibIterator dib;
    ASSERT_EQ(CDibIterator::Create(dib, 2, 1, VPF_INDEXED_8, CColorRef(), &palette), nullptr);
    ASSERT_TRUE(GammaCorrectDIBInplace(dib, t.red, t.green, t.blue));
    EXPECT_EQ(dib.GetBitmapInfo()->bmiColors[1].rgbRed, 255);

    CRowIterator noPalette;
    ASSERT_TRUE(CRowIteratorBands::Create(noPalette, 1, 1, VPF_INDEXED_8));
    EXPECT_FALSE(GammaCorrectDIBInplace(noPalette, t.red, t.green, t.blue));
    EXPECT_FALSE(GammaCorrectDIBInplace(image, nullptr, t.green, t.blue));
}
