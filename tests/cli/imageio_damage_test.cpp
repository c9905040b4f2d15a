// Damaged, missing and unsupported files: one clear error of the right kind,
// and a failed write leaves neither a partial file nor a changed old one.
#include <gtest/gtest.h>
#include <tiffio.h>

#include <cmath>
#include <cstring>
#include <filesystem>

#include "cli/Errors.h"
#include "cli/imageio/ImageFile.h"
#include "cli/imageio/JpegIcc.h"
#include "image_fixtures.h"
#include "support/temp_env.h"

namespace teskcolor::test {
namespace {

using tesk::test::ReadBytes;
using tesk::test::WriteBytes;

EExit ReadFailure(const std::string& path) {
    try {
        ReadImage(path);
    } catch (const CCliError& error) {
        EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos);
        EXPECT_NE(std::string(error.what()).find(path), std::string::npos) << error.what();
        return error.Code();
    }
    return EExit::Ok;
}

// Whatever the damage, one clear error; a scrambled body may still decode or be unsupported.
class DamagedFiles : public tesk::test::IsolatedTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(DamagedFiles, TruncatedScrambledOrSignatureOnly) {
    SImage image = SmoothImage(120, 90, VPF_RGB_8);
    image.iccProfile = SrgbProfileBytes();
    const std::string path = env_.Root() + "/sample" + GetParam();
    WriteImage(path, image);
    const std::vector<uint8_t> intact = ReadBytes(path);

    std::vector<uint8_t> bytes(intact.begin(), intact.begin() + long(intact.size() * 2 / 3));
    WriteBytes(path, bytes);
    EXPECT_EQ(ReadFailure(path), EExit::Corrupt);
    bytes.resize(8);
    WriteBytes(path, bytes);
    EXPECT_EQ(ReadFailure(path), EExit::Corrupt);
    // Keep the signature, scramble everything after the first header bytes.
    bytes = intact;
    for (size_t i = 16; i < bytes.size(); ++i) bytes[i] = uint8_t(i * 131 + 7);
    WriteBytes(path, bytes);
    const EExit code = ReadFailure(path);
    EXPECT_TRUE(code == EExit::Corrupt || code == EExit::Unsupported) << int(code);
}

INSTANTIATE_TEST_SUITE_P(Formats, DamagedFiles, ::testing::Values(".tif", ".png", ".jpg"),
                         [](const auto& info) { return std::string(info.param + 1); });

class FileErrors : public tesk::test::IsolatedTest {};

TEST_F(FileErrors, MissingEmptyAndForeignFiles) {
    EXPECT_EQ(ReadFailure(env_.Root() + "/absent.tif"), EExit::NotFound);
    WriteBytes(env_.Root() + "/empty.png", {});
    EXPECT_EQ(ReadFailure(env_.Root() + "/empty.png"), EExit::Corrupt);
    WriteBytes(env_.Root() + "/notes.tif", {'h', 'e', 'l', 'l', 'o', '\n'});
    EXPECT_EQ(ReadFailure(env_.Root() + "/notes.tif"), EExit::Unsupported);
}

// Untagged float grey keeps its meaning at 16 bits; what no 16-bit sample
// can hold is clipped, and NaN reads as 0.
TEST_F(FileErrors, FloatingPointTiffIsClippedIntoSixteenBits) {
    const std::string path = env_.Root() + "/float.tif";
    TIFF* tif = TIFFOpen(path.c_str(), "w");
    ASSERT_NE(tif, nullptr);
    TIFFSetField(tif, TIFFTAG_IMAGEWIDTH, 5u);
    TIFFSetField(tif, TIFFTAG_IMAGELENGTH, 1u);
    TIFFSetField(tif, TIFFTAG_BITSPERSAMPLE, 32);
    TIFFSetField(tif, TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(tif, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_IEEEFP);
    TIFFSetField(tif, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    float row[5] = {0.25f, 0.5f, std::nanf(""), 2.0f, -1.0f};
    TIFFWriteScanline(tif, row, 0, 0);
    TIFFClose(tif);
    const SImage image = ReadImage(path);
    ASSERT_EQ(image.pixels.GetPixelFormat(), VPF_GREY_16);
    uint16_t words[5];
    std::memcpy(words, image.pixels.GetRow(0), sizeof words);
    EXPECT_EQ(std::vector<uint16_t>(words, words + 5), (std::vector<uint16_t>{16384, 32768, 0, 65535, 0}));
}

TEST_F(FileErrors, OversizedImageIsRefusedBeforeDecoding) {
    const std::string path = env_.Root() + "/big.png";
    WriteImage(path, SmoothImage(300, 200, VPF_RGB_8));
    SReadOptions small;
    small.maxPixels = 1000;
    try {
        ReadImage(path, nullptr, small);
        ADD_FAILURE() << "no error";
    } catch (const CCliError& error) {
        EXPECT_EQ(error.Code(), EExit::Unsupported);
    }
}

TEST_F(FileErrors, FailedWriteKeepsTheOldFileAndLeavesNoTemporary) {
    const std::string path = env_.Root() + "/keep.png";
    WriteBytes(path, {1, 2, 3});
    SImage cmyk = PatternImage(4, 4, VPF_RGBA_8, true);
    EXPECT_THROW(WriteImage(path, cmyk), CCliError);
    EXPECT_EQ(ReadBytes(path), (std::vector<uint8_t>{1, 2, 3}));
    EXPECT_THROW(WriteImage(env_.Root() + "/no/such/folder/x.png", SmoothImage(4, 4, VPF_RGB_8)), CCliError);
    size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(env_.Root())) files += entry.is_regular_file();
    EXPECT_EQ(files, 1u);  // only keep.png
}

TEST(JpegIccMarkers, JoinsChunksInAnyOrderAndRejectsBrokenSets) {
    std::vector<uint8_t> profile(140000);
    for (size_t i = 0; i < profile.size(); ++i) profile[i] = uint8_t(i ^ (i >> 9));
    const auto markers = SplitIccProfile(profile);
    ASSERT_EQ(markers.size(), 3u);
    const uint8_t other[] = {'E', 'x', 'i', 'f', 0};
    std::vector<SMarkerBytes> shuffled = {{markers[2].data(), markers[2].size()},
                                          {other, sizeof other},
                                          {markers[0].data(), markers[0].size()},
                                          {markers[1].data(), markers[1].size()}};
    EXPECT_EQ(JoinIccMarkers(shuffled), profile);

    std::vector<SMarkerBytes> missing = {shuffled[0], shuffled[2]};
    EXPECT_TRUE(JoinIccMarkers(missing) == std::vector<uint8_t>{});
    std::vector<SMarkerBytes> repeated = {shuffled[0], shuffled[2], shuffled[3], shuffled[3]};
    EXPECT_TRUE(JoinIccMarkers(repeated) == std::vector<uint8_t>{});
    std::vector<uint8_t> badSequence = markers[0];
    badSequence[12] = 4;  // chunk 4 of 3
    EXPECT_TRUE(JoinIccMarkers({{badSequence.data(), badSequence.size()}}) == std::vector<uint8_t>{});
    const uint8_t headerOnly[] = {'I', 'C', 'C', '_', 'P', 'R', 'O', 'F', 'I', 'L', 'E', 0, 1};
    EXPECT_TRUE(JoinIccMarkers({{headerOnly, sizeof headerOnly}}) == std::vector<uint8_t>{});
    EXPECT_TRUE(SplitIccProfile({}).empty());
    EXPECT_TRUE(SplitIccProfile(std::vector<uint8_t>(kIccMarkerPayload * 255 + 1)).empty());
}

}  // namespace
}  // namespace teskcolor::test
