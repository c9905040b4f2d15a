// Every format and depth written and read back with its embedded profile.
#include <gtest/gtest.h>
#include <tiffio.h>

#include <filesystem>
#include <tuple>

#include "cli/imageio/ImageFile.h"
#include "image_fixtures.h"
#include "support/temp_env.h"

namespace teskcolor::test {
namespace {

struct SCase {
    const char* extension;
    EVPixelFormat format;
    bool cmyk;
};

std::string CaseName(const ::testing::TestParamInfo<SCase>& info) {
    return std::string(info.param.extension + 1) + "_format" + std::to_string(int(info.param.format)) +
           (info.param.cmyk ? "_cmyk" : "");
}

class LosslessRoundTrip : public tesk::test::IsolatedTest, public ::testing::WithParamInterface<SCase> {};

TEST_P(LosslessRoundTrip, PixelsAndProfileComeBackExactly) {
    const SCase& c = GetParam();
    SImage image = PatternImage(37, 11, c.format, c.cmyk);
    // A profile whose colour space matches the pixels (PNG checks that).
    image.iccProfile = CVPixelFormat::IsGreyscale(c.format) ? GreyProfileBytes() : SrgbProfileBytes();
    if (c.cmyk) image.iccProfile = tesk::test::ReadBytes(tesk::test::DataPath("ColorProfile/ISO Coated (FOGRA39).icc"));
    const std::string path = env_.Root() + "/image" + c.extension;

    WriteImage(path, image);
    SImage back = ReadImage(path);

    EXPECT_EQ(back.cmyk, c.cmyk);
    EXPECT_EQ(MaxSampleDifference(back.pixels, image.pixels), 0);
    EXPECT_EQ(back.iccProfile, image.iccProfile);
}

INSTANTIATE_TEST_SUITE_P(
    Formats, LosslessRoundTrip,
    ::testing::Values(SCase{".tif", VPF_GREY_8, false}, SCase{".tif", VPF_GREY_16, false},
                      SCase{".tif", VPF_RGB_8, false}, SCase{".tif", VPF_RGB_16, false},
                      SCase{".tif", VPF_RGBA_8, false}, SCase{".tif", VPF_RGBA_16, false},
                      SCase{".tif", VPF_RGBA_8, true}, SCase{".tiff", VPF_RGBA_16, true},
                      SCase{".png", VPF_GREY_8, false}, SCase{".png", VPF_GREY_16, false},
                      SCase{".png", VPF_GREY_ALPHA_8, false}, SCase{".png", VPF_RGB_8, false},
                      SCase{".png", VPF_RGB_16, false}, SCase{".png", VPF_RGBA_8, false},
                      SCase{".png", VPF_RGBA_16, false}),
    CaseName);

class JpegRoundTrip : public tesk::test::IsolatedTest, public ::testing::WithParamInterface<EVPixelFormat> {};

TEST_P(JpegRoundTrip, PixelsCloseAndProfileExact) {
    SImage image = SmoothImage(64, 48, GetParam());
    // Larger than one APP2 marker holds, so it is split and joined again.
    image.iccProfile.resize(150000);
    for (size_t i = 0; i < image.iccProfile.size(); ++i) image.iccProfile[i] = uint8_t(i * 7 + i / 251);
    // The header fields a reader checks against the file and its pixels.
    const uint32_t size = uint32_t(image.iccProfile.size());
    const char* space = GetParam() == VPF_GREY_8 ? "GRAY" : "RGB ";
    for (int i = 0; i < 4; ++i) {
        image.iccProfile[size_t(i)] = uint8_t(size >> (24 - 8 * i));
        image.iccProfile[size_t(16 + i)] = uint8_t(space[i]);
        image.iccProfile[size_t(36 + i)] = uint8_t("acsp"[i]);
    }
    const std::string path = env_.Root() + "/photo.jpg";

    WriteImage(path, image);
    SImage back = ReadImage(path);

    EXPECT_FALSE(back.cmyk);
    EXPECT_GE(MaxSampleDifference(back.pixels, image.pixels), 0);
    EXPECT_LE(MaxSampleDifference(back.pixels, image.pixels), 6);
    EXPECT_EQ(back.iccProfile, image.iccProfile);
}

INSTANTIATE_TEST_SUITE_P(Formats, JpegRoundTrip, ::testing::Values(VPF_GREY_8, VPF_RGB_8));

TEST(ImageTypes, ExtensionsAndSignatures) {
    EXPECT_EQ(ImageTypeForPath("a/B.TIFF"), EImageType::Tiff);
    EXPECT_EQ(ImageTypeForPath("x.Jpeg"), EImageType::Jpeg);
    EXPECT_EQ(ImageTypeForPath("x.png"), EImageType::Png);
    EXPECT_FALSE(ImageTypeForPath("x.bmp").has_value());
    const uint8_t bigTiff[] = {'M', 'M', 0, 42};
    const uint8_t text[] = {'h', 'e', 'l', 'l'};
    EXPECT_EQ(DetectImageType(bigTiff, 4), EImageType::Tiff);
    EXPECT_FALSE(DetectImageType(text, 4).has_value());
    EXPECT_FALSE(DetectImageType(bigTiff, 3).has_value());
}

}  // namespace
}  // namespace teskcolor::test

namespace teskcolor::test {
namespace {

// Writes `image` (8-bit RGB) with libtiff in file order R, G, B: contiguous
// strips, separate planes or tiles.
void WriteTiffLayout(const std::string& path, const SImage& image, bool planes, bool tiles) {
    TIFF* tif = TIFFOpen(path.c_str(), "w");
    ASSERT_NE(tif, nullptr);
    const int width = image.pixels.GetWidth(), height = image.pixels.GetHeight();
    TIFFSetField(tif, TIFFTAG_IMAGEWIDTH, uint32_t(width));
    TIFFSetField(tif, TIFFTAG_IMAGELENGTH, uint32_t(height));
    TIFFSetField(tif, TIFFTAG_BITSPERSAMPLE, 8);
    TIFFSetField(tif, TIFFTAG_SAMPLESPERPIXEL, 3);
    TIFFSetField(tif, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
    TIFFSetField(tif, TIFFTAG_COMPRESSION, COMPRESSION_LZW);
    TIFFSetField(tif, TIFFTAG_PLANARCONFIG, planes ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG);
    auto sample = [&](int x, int y, int c) { return image.pixels.GetRow(y)[x * 3 + (2 - c)]; };  // R,G,B from B,G,R
    if (tiles) {
        TIFFSetField(tif, TIFFTAG_TILEWIDTH, 16u);
        TIFFSetField(tif, TIFFTAG_TILELENGTH, 16u);
        std::vector<uint8_t> tile(16 * 16 * 3);
        for (int top = 0; top < height; top += 16)
            for (int left = 0; left < width; left += 16) {
                std::fill(tile.begin(), tile.end(), 0);
                for (int y = top; y < std::min(height, top + 16); ++y)
                    for (int x = left; x < std::min(width, left + 16); ++x)
                        for (int c = 0; c < 3; ++c) tile[((y - top) * 16 + (x - left)) * 3 + c] = sample(x, y, c);
                ASSERT_GE(TIFFWriteTile(tif, tile.data(), uint32_t(left), uint32_t(top), 0, 0), 0);
            }
    } else {
        TIFFSetField(tif, TIFFTAG_ROWSPERSTRIP, 5u);
        std::vector<uint8_t> row(size_t(width) * 3);
        for (int plane = 0; plane < (planes ? 3 : 1); ++plane)
            for (int y = 0; y < height; ++y) {
                for (int x = 0; x < width; ++x)
                    for (int c = 0; c < 3; ++c)
                        if (planes)
                            row[size_t(x)] = sample(x, y, plane);
                        else
                            row[size_t(x) * 3 + c] = sample(x, y, c);
                ASSERT_GE(TIFFWriteScanline(tif, row.data(), uint32_t(y), uint16_t(plane)), 0);
            }
    }
    TIFFClose(tif);
}

class TiffLayouts : public tesk::test::IsolatedTest {};

// Read right from libtiff's files and round trips exact, the writer stores red first too.
TEST_F(TiffLayouts, StripsPlanesAndTilesReadAsWritten) {
    const SImage image = PatternImage(37, 21, VPF_RGB_8);  // not a multiple of the tile size
    for (auto [planes, tiles] : {std::pair{false, false}, std::pair{true, false}, std::pair{false, true}}) {
        const std::string path = env_.Root() + "/layout.tif";
        WriteTiffLayout(path, image, planes, tiles);
        const SImage back = ReadImage(path);
        EXPECT_EQ(MaxSampleDifference(back.pixels, image.pixels), 0) << "planes " << planes << " tiles " << tiles;
    }
}

// Deflated strips are predicted and compressed off the writing thread:
// several strips and a short last one, every width the predictor knows,
// with the calling thread alone and with workers.
TEST_F(TiffLayouts, DeflateStripsReadBackExactly) {
    for (const char* threads : {"1", "3"}) {
        setenv("TESK_DEFLATE_THREADS", threads, 1);
        for (auto [format, cmyk] : {std::pair{VPF_RGB_8, false}, std::pair{VPF_RGB_16, false}, std::pair{VPF_RGBA_8, true}}) {
            const SImage image = PatternImage(4000, 53, format, cmyk);
            const std::string path = env_.Root() + "/deflate.tif";
            WriteImage(path, image);
            TIFF* tif = TIFFOpen(path.c_str(), "r");
            ASSERT_NE(tif, nullptr);
            uint16_t predictor = 0;
            TIFFGetField(tif, TIFFTAG_PREDICTOR, &predictor);
            EXPECT_EQ(predictor, PREDICTOR_HORIZONTAL);
            EXPECT_GT(TIFFNumberOfStrips(tif), 2u);
            TIFFClose(tif);
            EXPECT_EQ(MaxSampleDifference(ReadImage(path).pixels, image.pixels), 0)
                << "format " << int(format) << " threads " << threads;
        }
    }
    unsetenv("TESK_DEFLATE_THREADS");
}

}  // namespace
}  // namespace teskcolor::test
