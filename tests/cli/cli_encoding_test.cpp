// --compression, --quality and --no-embed as the program's outputs show them:
// the TIFF's own compression tag, pixels read back, sizes and profiles.
#include <gtest/gtest.h>
#include <tiffio.h>

#include <filesystem>

#include "cli/imageio/ImageFile.h"
#include "cli_runner.h"
#include "image_fixtures.h"

namespace teskcolor::test {
namespace {

class CliEncoding : public tesk::test::IsolatedTest {
protected:
    std::string Path(const std::string& name) const { return env_.Root() + "/" + name; }
};

uint16_t CompressionTagOf(const std::string& path) {
    TIFF* tif = TIFFOpen(path.c_str(), "r");
    if (!tif) return 0;
    uint16_t compression = 0;
    TIFFGetFieldDefaulted(tif, TIFFTAG_COMPRESSION, &compression);
    TIFFClose(tif);
    return compression;
}

TEST_F(CliEncoding, EachCompressionRoundTripsThroughSingleAndBandedWriters) {
    ASSERT_EQ(RunTeskcolor({"chart", "--width", "64", "--height", "48", Path("chart.tif")}).code, 0);
    const SImage chart = ReadImage(Path("chart.tif"));
    EXPECT_EQ(CompressionTagOf(Path("chart.tif")), COMPRESSION_ADOBE_DEFLATE);
    ASSERT_EQ(RunTeskcolor({"separate", "--packed", Path("chart.tif"), Path("cmyk.tif")}).code, 0);
    const SImage cmyk = ReadImage(Path("cmyk.tif"));
    const struct {
        const char* name;
        uint16_t tag;
    } kCases[] = {{"none", COMPRESSION_NONE}, {"lzw", COMPRESSION_LZW}, {"deflate", COMPRESSION_ADOBE_DEFLATE},
                  {"zstd", COMPRESSION_ZSTD}};
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        if (!TIFFIsCODECConfigured(test.tag)) {
            EXPECT_EQ(RunTeskcolor({"chart", "--compression", test.name, Path("x.tif")}).code, 2);
            continue;
        }
        const std::string whole = Path(std::string("strip-") + test.name + ".tif");
        const std::string banded = Path(std::string("cmyk-") + test.name + ".tif");
        ASSERT_EQ(RunTeskcolor({"profile", "strip", "--compression", test.name, Path("chart.tif"), whole}).code, 0);
        ASSERT_EQ(RunTeskcolor({"separate", "--packed", "--compression", test.name, Path("chart.tif"), banded}).code, 0);
        EXPECT_EQ(CompressionTagOf(whole), test.tag);
        EXPECT_EQ(CompressionTagOf(banded), test.tag);
        EXPECT_EQ(MaxSampleDifference(ReadImage(whole).pixels, chart.pixels), 0);
        EXPECT_EQ(MaxSampleDifference(ReadImage(banded).pixels, cmyk.pixels), 0);
    }
}

TEST_F(CliEncoding, QualityChangesTheJpegAndNoEmbedLeavesTheProfileOut) {
    ASSERT_EQ(RunTeskcolor({"chart", "--width", "128", "--height", "96", Path("chart.tif")}).code, 0);
    ASSERT_EQ(RunTeskcolor({"convert", "--quality", "20", Path("chart.tif"), Path("low.jpg")}).code, 0);
    ASSERT_EQ(RunTeskcolor({"convert", "--quality", "98", Path("chart.tif"), Path("high.jpg")}).code, 0);
    EXPECT_LT(std::filesystem::file_size(Path("low.jpg")) * 2, std::filesystem::file_size(Path("high.jpg")));
    EXPECT_EQ(RunTeskcolor({"convert", "--quality", "101", Path("chart.tif"), Path("bad.jpg")}).code, 2);

    for (const char* extension : {".tif", ".png", ".jpg"}) {
        SCOPED_TRACE(extension);
        const std::string tagged = Path(std::string("tagged") + extension), bare = Path(std::string("bare") + extension);
        ASSERT_EQ(RunTeskcolor({"convert", Path("chart.tif"), tagged}).code, 0);
        ASSERT_EQ(RunTeskcolor({"convert", "--no-embed", Path("chart.tif"), bare}).code, 0);
        EXPECT_FALSE(ReadImage(tagged).iccProfile.empty());
        EXPECT_TRUE(ReadImage(bare).iccProfile.empty());
    }
}

}  // namespace
}  // namespace teskcolor::test
