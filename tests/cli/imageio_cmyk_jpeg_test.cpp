// CMYK JPEGs as Adobe's applications write them: inverted samples, said so by
// the APP14 marker. They come in as ink amounts.
#include <gtest/gtest.h>

#include <cstdio>
// jpeglib.h needs FILE and size_t declared first.
#include <jpeglib.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "cli/imageio/ImageFile.h"
#include "image_fixtures.h"
#include "support/temp_env.h"

namespace teskcolor::test {
namespace {

class CmykJpeg : public tesk::test::IsolatedTest {};

TEST_F(CmykJpeg, AdobeInvertedInksReadAsInkAmounts) {
    const int width = 40, height = 16;
    std::vector<uint8_t> inks(size_t(width) * height * 4);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < 4; ++c) inks[(size_t(y) * width + x) * 4 + c] = uint8_t(c * 60 + x * 2);

    const std::string path = env_.Root() + "/cmyk.jpg";
    FILE* file = std::fopen(path.c_str(), "wb");
    ASSERT_NE(file, nullptr);
    jpeg_compress_struct cinfo{};
    jpeg_error_mgr errors{};
    cinfo.err = jpeg_std_error(&errors);
    jpeg_create_compress(&cinfo);
    jpeg_stdio_dest(&cinfo, file);
    cinfo.image_width = width;
    cinfo.image_height = height;
    cinfo.input_components = 4;
    cinfo.in_color_space = JCS_CMYK;
    jpeg_set_defaults(&cinfo);
    jpeg_set_quality(&cinfo, 100, TRUE);
    ASSERT_TRUE(cinfo.write_Adobe_marker);
    jpeg_start_compress(&cinfo, TRUE);
    std::vector<uint8_t> row(size_t(width) * 4);
    for (int y = 0; y < height; ++y) {
        for (size_t i = 0; i < row.size(); ++i) row[i] = uint8_t(255 - inks[size_t(y) * width * 4 + i]);
        JSAMPROW rows[1] = {row.data()};
        jpeg_write_scanlines(&cinfo, rows, 1);
    }
    jpeg_finish_compress(&cinfo);
    jpeg_destroy_compress(&cinfo);
    std::fclose(file);

    const SImage image = ReadImage(path);
    ASSERT_TRUE(image.cmyk);
    ASSERT_EQ(image.pixels.GetPixelFormat(), VPF_RGBA_8);
    int worst = 0;
    for (int y = 0; y < height; ++y)
        for (int i = 0; i < width * 4; ++i)
            worst = std::max(worst, std::abs(int(image.pixels.GetRow(y)[i]) - int(inks[size_t(y) * width * 4 + i])));
    EXPECT_LE(worst, 3);
}

}  // namespace
}  // namespace teskcolor::test
