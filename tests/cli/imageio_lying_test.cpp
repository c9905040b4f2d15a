// Images that lie: damaged data after a valid start, a header claiming far
// more pixels than the file holds, embedded profiles that are damaged or do
// not fit the pixels. Each is an error, never a quietly wrong image.
#include <gtest/gtest.h>

#include <algorithm>

#include "cli/Errors.h"
#include "cli/imageio/Codecs.h"
#include "cli/imageio/ImageFile.h"
#include "image_fixtures.h"
#include "support/temp_env.h"

namespace teskcolor::test {
namespace {

using tesk::test::ReadBytes;
using tesk::test::WriteBytes;

size_t Find(const std::vector<uint8_t>& bytes, std::initializer_list<uint8_t> pattern, size_t from = 0) {
    auto at = std::search(bytes.begin() + long(from), bytes.end(), pattern.begin(), pattern.end());
    EXPECT_NE(at, bytes.end());
    return size_t(at - bytes.begin());
}

EExit ReadFailure(const std::string& path) {
    try {
        ReadImage(path);
    } catch (const CCliError& error) {
        EXPECT_NE(std::string(error.what()).find(path), std::string::npos) << error.what();
        return error.Code();
    }
    return EExit::Ok;
}

class LyingImages : public tesk::test::IsolatedTest {
protected:
    std::string Path(const std::string& name) const { return env_.Root() + "/" + name; }
    // A JPEG of `width` x `height` with an sRGB profile, as bytes.
    std::vector<uint8_t> Jpeg(int width, int height) {
        SImage image = SmoothImage(width, height, VPF_RGB_8);
        image.iccProfile = SrgbProfileBytes();
        WriteImage(Path("made.jpg"), image);
        return ReadBytes(Path("made.jpg"));
    }
};

TEST_F(LyingImages, JpegScanDataCutShortByAnEndMarkerIsCorrupt) {
    std::vector<uint8_t> bytes = Jpeg(256, 256);
    const size_t scan = Find(bytes, {0xFF, 0xDA});
    bytes.resize(scan + (bytes.size() - scan) / 2);
    bytes.insert(bytes.end(), {0xFF, 0xD9});
    WriteBytes(Path("cut.jpg"), bytes);
    EXPECT_EQ(ReadFailure(Path("cut.jpg")), EExit::Corrupt);
}

TEST_F(LyingImages, SizeTheFileCannotHoldIsRefusedBeforeDecoding) {
    std::vector<uint8_t> bytes = Jpeg(64, 64);
    const size_t frame = Find(bytes, {0xFF, 0xC0});
    for (size_t field : {frame + 5, frame + 7}) bytes[field] = 0x40, bytes[field + 1] = 0;  // 16384 x 16384
    WriteBytes(Path("bomb.jpg"), bytes);
    EXPECT_EQ(ReadFailure(Path("bomb.jpg")), EExit::Unsupported);
    // The header and the profile are still there to be had, without the pixels.
    const SImageHeader header = ReadImageHeader(Path("bomb.jpg"), {});
    EXPECT_EQ(header.width, 16384);
    EXPECT_EQ(header.iccProfile, SrgbProfileBytes());
}

TEST_F(LyingImages, DamagedOrUnfitEmbeddedProfilesAreErrors) {
    // A grey profile on RGB pixels.
    SImage rgb = SmoothImage(16, 16, VPF_RGB_8);
    rgb.iccProfile = GreyProfileBytes();
    WriteImage(Path("grey-on-rgb.tif"), rgb);
    EXPECT_EQ(ReadFailure(Path("grey-on-rgb.tif")), EExit::WrongProfile);

    // JPEG chunk 2 of 1.
    std::vector<uint8_t> bytes = Jpeg(16, 16);
    bytes[Find(bytes, {'I', 'C', 'C', '_', 'P', 'R', 'O', 'F', 'I', 'L', 'E', 0}) + 12] = 2;
    WriteBytes(Path("chunks.jpg"), bytes);
    EXPECT_EQ(ReadFailure(Path("chunks.jpg")), EExit::Corrupt);

    // A PNG whose iCCP chunk fails its checksum: libpng drops the profile.
    rgb.iccProfile = SrgbProfileBytes();
    WriteImage(Path("made.png"), rgb);
    bytes = ReadBytes(Path("made.png"));
    bytes[Find(bytes, {'i', 'C', 'C', 'P'}) + 20] ^= 0x55;
    WriteBytes(Path("iccp.png"), bytes);
    EXPECT_EQ(ReadFailure(Path("iccp.png")), EExit::Corrupt);
}

TEST(TiffOutput, PastFourGibibytesIsBigTiff) {
    SImageHeader header{32768, 32768, VPF_RGBA_8, true, {}};
    EXPECT_TRUE(NeedsBigTiff(header));
    header.height = 30000;  // 3.9 GB of pixels
    EXPECT_FALSE(NeedsBigTiff(header));
}

}  // namespace
}  // namespace teskcolor::test
