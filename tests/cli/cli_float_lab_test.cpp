// Floating-point and Lab TIFFs against lcms2's tificc: what tificc writes we
// read, and what we write tificc reads, where tificc can.
#include <gtest/gtest.h>

#include <tiffio.h>

#include <cmath>
#include <cstring>
#include <memory>

#include "cli/imageio/ImageFile.h"
#include "cli_runner.h"
#include "image_fixtures.h"
#include "support/lcms_profiles.h"
#include "support/temp_env.h"

namespace teskcolor::test {
namespace {

// Largest difference in 8-bit steps between two images of one channel layout, any depths.
double WorstSteps(const SImage& a, const SImage& b) {
    const CRowIterator &pa = a.pixels, &pb = b.pixels;
    const int channels = CVPixelFormat::GetChannelCount(pa.GetPixelFormat());
    if (pa.GetWidth() != pb.GetWidth() || pa.GetHeight() != pb.GetHeight() ||
        channels != CVPixelFormat::GetChannelCount(pb.GetPixelFormat()))
        return 1e9;
    auto sample = [](const CRowIterator& p, int y, int i) {
        if (!CVPixelFormat::Is16bit(p.GetPixelFormat())) return double(p.GetRow(y)[i]);
        uint16_t word;
        std::memcpy(&word, p.GetRow(y) + 2 * i, 2);
        return word / 257.0;
    };
    double worst = 0;
    for (int y = 0; y < pa.GetHeight(); ++y)
        for (int i = 0; i < pa.GetWidth() * channels; ++i)
            worst = std::max(worst, std::abs(sample(pa, y, i) - sample(pb, y, i)));
    return worst;
}

class FloatAndLabTiff : public tesk::test::IsolatedTest {
protected:
    void SetUp() override {
        tesk::test::IsolatedTest::SetUp();
        tificc_ = FindTool("tificc");
        if (tificc_.empty()) GTEST_SKIP() << "tificc (liblcms2-utils) is not installed";
        working_ = env_.ColorDir() + "/sRGB Color Space Profile.icm";
    }
    std::string Path(const std::string& name) const { return env_.Root() + "/" + name; }
    void Run(const std::vector<std::string>& args) {
        const SRun run = RunTeskcolor(args);
        ASSERT_EQ(run.code, 0) << args[0] << ": " << run.err;
    }
    void Tificc(const std::string& flags, const std::string& in, const std::string& out) {
        const std::string command = "'" + tificc_ + "' -t1 " + flags + " '" + Path(in) + "' '" + Path(out) + "' >/dev/null 2>&1";
        ASSERT_EQ(std::system(command.c_str()), 0) << command;
    }
    std::string tificc_, working_;
};

// L*, a*, b* of each pixel in the file's units, a* and b* centred on 0.
std::vector<int> LabSamples(const std::string& path) {
    std::unique_ptr<TIFF, void (*)(TIFF*)> tif(TIFFOpen(path.c_str(), "r"), TIFFClose);
    uint32_t width = 0, height = 0;
    uint16_t photometric = 0;
    TIFFGetField(tif.get(), TIFFTAG_IMAGEWIDTH, &width);
    TIFFGetField(tif.get(), TIFFTAG_IMAGELENGTH, &height);
    TIFFGetField(tif.get(), TIFFTAG_PHOTOMETRIC, &photometric);
    std::vector<uint8_t> row(size_t(TIFFScanlineSize(tif.get())));
    std::vector<int> samples;
    for (uint32_t y = 0; y < height && TIFFReadScanline(tif.get(), row.data(), y, 0) >= 0; ++y)
        for (size_t i = 0; i < size_t(width) * 3; ++i)
            samples.push_back(i % 3 == 0                          ? row[i]
                              : photometric == PHOTOMETRIC_CIELAB ? int(int8_t(row[i]))
                                                                  : int(row[i]) - 128);
    return samples;
}

// tificc writes 8-bit Lab as CIE Lab (signed a*, b*) and reads no ICC Lab;
// its 16-bit Lab is ICC Lab in name only (signed a*, b*), so 16 bits go round
// through our own files. tificc converts unprecalculated (-c0): a
// precalculated grid is steps off at the gamut's edge.
TEST_F(FloatAndLabTiff, LabAgainstTificcAtEightBitsAndRoundTripAtSixteen) {
    Run({"chart", "--width", "200", "--height", "120", Path("chart8.tif")});
    Tificc("-c0 -w8 '-i" + working_ + "' -o*Lab", "chart8.tif", "peer-lab.tif");
    Tificc("-c0 -w16 -i*Lab '-o" + working_ + "'", "peer-lab.tif", "peer-from-peer.tif");
    Run({"convert", Path("peer-lab.tif"), Path("ours-from-peer.tif")});
    EXPECT_LE(WorstSteps(ReadImage(Path("ours-from-peer.tif")), ReadImage(Path("peer-from-peer.tif"))), 1.0);
    Run({"convert", "--lab", Path("chart8.tif"), Path("ours-lab.tif")});
    const std::vector<int> ours = LabSamples(Path("ours-lab.tif")), peer = LabSamples(Path("peer-lab.tif"));
    ASSERT_EQ(ours.size(), 200u * 120 * 3);
    ASSERT_EQ(ours.size(), peer.size());
    for (size_t i = 0; i < ours.size(); ++i) ASSERT_LE(std::abs(ours[i] - peer[i]), 1) << "sample " << i;

    Run({"chart", "--16bit", "--width", "200", "--height", "120", Path("chart16.tif")});
    Run({"convert", "--lab", Path("chart16.tif"), Path("ours-lab16.tif")});
    Run({"convert", Path("ours-lab16.tif"), Path("back16.tif")});
    EXPECT_LE(WorstSteps(ReadImage(Path("back16.tif")), ReadImage(Path("chart16.tif"))), 0.25);
}

// A float file in another RGB space comes into the working space; ours is read by tificc.
TEST_F(FloatAndLabTiff, FloatBothWaysThroughTheEmbeddedProfile) {
    tesk::test::WriteRgbProfile(Path("adobe.icc"), 2.2);
    Run({"chart", "--16bit", "--width", "200", "--height", "120", Path("chart.tif")});
    const SImage original = ReadImage(Path("chart.tif"));
    Tificc("-w32 -e '-i" + working_ + "' '-o" + Path("adobe.icc") + "'", "chart.tif", "peer-float.tif");
    Run({"convert", Path("peer-float.tif"), Path("ours-from-peer.tif")});
    EXPECT_LE(WorstSteps(ReadImage(Path("ours-from-peer.tif")), original), 0.25);

    Run({"convert", "--float", Path("chart.tif"), Path("ours-float.tif")});
    Tificc("-w16 '-i" + working_ + "' '-o" + working_ + "'", "ours-float.tif", "peer-from-ours.tif");
    EXPECT_LE(WorstSteps(ReadImage(Path("peer-from-ours.tif")), original), 0.25);
}

}  // namespace
}  // namespace teskcolor::test
