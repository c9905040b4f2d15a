#include <gtest/gtest.h>

#include <vector>

#include "host/imaging/DibIterator.h"
#include "host/imaging/ImagingError.h"
#include "host/imaging/RowIteratorBands.h"

namespace {

// Fails the test with the error's code; releases it.
void ExpectOk(IVError* error) {
    if (error) {
        ADD_FAILURE() << "error " << error->GetCode();
        error->Release();
    }
}

int CodeOf(IVError* error) {
    if (!error) return 0;
    const int code = error->GetCode();
    error->Release();
    return code;
}

}  // namespace

TEST(Dib, BottomUpRowsAndHeader) {
    CDibIterator dib;
    ExpectOk(CDibIterator::Create(dib, 5, 3, VPF_RGB_8, CColorRef(1, 2, 3), nullptr, 96));
    EXPECT_EQ(dib.GetStride(), 16);
    EXPECT_EQ(dib.GetBPP(), 24);
    const BITMAPINFOHEADER& h = dib.GetBitmapInfo()->bmiHeader;
    EXPECT_EQ((std::vector<long>{h.biWidth, h.biHeight, h.biBitCount, h.biXPelsPerMeter}),
              (std::vector<long>{5, 3, 24, 3780}));

    BYTE* row = nullptr;
    ExpectOk(dib.GetRow(0, 0, 5, 0, &row));
    EXPECT_EQ(row, dib.GetBits() + 2 * 16);  // the top row is stored last
    EXPECT_EQ(row[0], 3);                    // background, blue first
    EXPECT_EQ(row[2], 1);
    ExpectOk(dib.ReleaseRow(row));

    EXPECT_EQ(CodeOf(dib.GetRow(3, 0, 5, 0, &row)), VIMG_ERR_ARGUMENT);
    EXPECT_EQ(CodeOf(dib.GetRow(0, 2, 4, 0, &row)), VIMG_ERR_ARGUMENT);  // runs past the width
    EXPECT_EQ(CodeOf(dib.GetRow(0, 0, 1, 1, &row)), VIMG_ERR_ARGUMENT);  // no sub-byte offset at 24 bits
    EXPECT_EQ(CodeOf(CDibIterator::Create(dib, 2, 2, EVPixelFormat(9 + 5), CColorRef())), VIMG_ERR_ARGUMENT);
    EXPECT_FALSE(dib.IsCreated());
    EXPECT_EQ(CodeOf(CDibIterator::Create(dib, 0x7FFFFFFF, 0x7FFFFFFF, VPF_RGBA_16, CColorRef())), VIMG_ERR_NO_MEMORY);
}

TEST(Dib, RealignedRowWritesBackOnRelease) {
    CVPalette palette;
    palette.CreateGreyscale(16);
    CDibIterator dib;
    ExpectOk(CDibIterator::Create(dib, 6, 2, VPF_INDEXED_4, CColorRef(0, 0, 0, 255, 5), &palette));
    EXPECT_EQ(dib.GetPaletteCount(), 16);
    EXPECT_EQ(dib.GetBitmapInfo()->bmiHeader.biClrUsed, 16u);
    EXPECT_EQ(dib.GetBitmapInfo()->bmiColors[15].rgbRed, 255);

    // Pixel 1 lies in the low nibble; asked for at offset 0 it comes as a copy.
    BYTE* row = nullptr;
    ExpectOk(dib.GetRow(1, 1, 3, 0, &row));
    EXPECT_EQ(row[0], 0x55);
    row[0] = 0xAB;
    row[1] = 0xC0;
    ExpectOk(dib.ReleaseRow(row));
    BYTE* direct = nullptr;
    ExpectOk(dib.GetRow(1, 0, 6, 0, &direct));
    EXPECT_EQ(std::vector<BYTE>(direct, direct + 3), (std::vector<BYTE>{0x5A, 0xBC, 0x55}));
    ExpectOk(dib.ReleaseRow(direct));

    // Where the bits already lie as asked, the row is the bitmap itself.
    ExpectOk(dib.GetRow(0, 3, 2, 1, &row));
    EXPECT_EQ(row, dib.GetBits() + 4 + 1);  // row 0 is the second stored row
    EXPECT_EQ(CodeOf(dib.ReleaseRow(reinterpret_cast<BYTE*>(&dib))), VIMG_ERR_ARGUMENT);
}
