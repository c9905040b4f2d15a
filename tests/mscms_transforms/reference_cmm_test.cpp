// Conversions checked against ArgyllCMS xicclu, an independent CMM, within a
// stated CIEDE2000 tolerance (when it is installed). Agreement with lcms2
// itself is checked byte for byte in the other tests.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "support/programs.h"
#include "transform_test_support.h"

namespace tesk::test {
namespace {

using Values = std::vector<std::vector<double>>;

const char* const kFogra = TESK_SOURCE_DIR "/data/ColorProfile/ISO Coated (FOGRA39).icc";
// colord's profiles are version 4 files that xicclu 2.3 cannot read; the
// tests use icc-profiles-free's sRGB and its Adobe RGB (1998) compatible
// profile, on both sides of the comparison.
const char* const kFreeSrgb = "/usr/share/color/icc/sRGB.icc";
const char* const kFreeAdobe = "/usr/share/color/icc/compatibleWithAdobeRGB1998.icc";

bool HasTool(const std::string& name) { return !FindTool(name).empty(); }
std::string Quoted(const std::string& path) { return ShellQuote(path); }

// Feeds `input` to `command`, one colour a line, and reads one colour a line back.
Values RunTool(const std::string& command, const Values& input, const std::string& scratch) {
    {
        std::ofstream file(scratch);
        file.precision(10);
        for (const auto& colour : input) {
            for (double v : colour) file << v << ' ';
            file << '\n';
        }
    }
    Values output;
    std::istringstream lines(RunShell(command + " < " + Quoted(scratch) + " 2>/dev/null").out);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream in(line);
        std::vector<double> colour;
        for (double v; in >> v;) colour.push_back(v);
        if (!colour.empty()) output.push_back(colour);
    }
    return output;
}

// RGB samples: a 6-level cube and pseudo-random colours.
Bytes SampleRgb() {
    Bytes rgb;
    for (int r = 0; r < 256; r += 51)
        for (int g = 0; g < 256; g += 51)
            for (int b = 0; b < 256; b += 51) rgb.insert(rgb.end(), {uint8_t(r), uint8_t(g), uint8_t(b)});
    const Bytes noise = NoiseBytes(3 * 200, 21);
    rgb.insert(rgb.end(), noise.begin(), noise.end());
    return rgb;
}

Values AsValues(const Bytes& bytes, size_t channels, double scale) {
    Values values;
    for (size_t i = 0; i + channels <= bytes.size(); i += channels) {
        std::vector<double> colour;
        for (size_t c = 0; c < channels; ++c) colour.push_back(bytes[i + c] * scale);
        values.push_back(colour);
    }
    return values;
}

// Device values (0..1) to Lab through a profile's relative colorimetric A2B.
std::vector<cmsCIELab> ToLab(const Bytes& profile, const Values& device, bool cmyk) {
    cmsHPROFILE in = cmsOpenProfileFromMem(profile.data(), static_cast<cmsUInt32Number>(profile.size()));
    cmsHPROFILE lab = cmsCreateLab4Profile(nullptr);
    cmsHTRANSFORM transform = cmsCreateTransform(in, cmyk ? TYPE_CMYK_DBL : TYPE_RGB_DBL, lab, TYPE_Lab_DBL,
                                                 INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_NOOPTIMIZE);
    std::vector<cmsCIELab> result(device.size());
    for (size_t i = 0; i < device.size(); ++i) {
        double v[4];
        for (size_t c = 0; c < device[i].size() && c < 4; ++c) v[c] = device[i][c] * (cmyk ? 100.0 : 1.0);
        cmsDoTransform(transform, v, &result[i], 1);
    }
    cmsDeleteTransform(transform);
    cmsCloseProfile(lab);
    cmsCloseProfile(in);
    return result;
}

struct DeltaE {
    double mean = 0, max = 0;
};

DeltaE Compare(const std::vector<cmsCIELab>& a, const std::vector<cmsCIELab>& b) {
    DeltaE result;
    for (size_t i = 0; i < a.size(); ++i) {
        const double d = cmsCIE2000DeltaE(&a[i], &b[i], 1, 1, 1);
        result.mean += d / a.size();
        result.max = std::max(result.max, d);
    }
    return result;
}

class ReferenceCmm : public IsolatedTest {
protected:
    std::string Scratch() const { return env_.Root() + "/colours.txt"; }
    const Bytes rgb_ = SampleRgb();
    const size_t count_ = SampleRgb().size() / 3;
};

// Argyll goes device -> Lab -> device with the same profiles; both results
// are compared as colours (CIEDE2000 through the destination profile).
TEST_F(ReferenceCmm, XiccluSrgbToFogra39AndAdobeRgbWithinDeltaE) {
    const Bytes srgb = InstalledProfile(kFreeSrgb);
    if (!HasTool("xicclu") || srgb.empty()) GTEST_SKIP() << "xicclu or icc-profiles-free's sRGB.icc missing";
    const struct {
        std::string path;
        bool cmyk;
        double meanLimit, maxLimit;
    } destinations[] = {{kFogra, true, 0.5, 2.0}, {kFreeAdobe, false, 0.3, 1.0}};
    for (const auto& destination : destinations) {
        SCOPED_TRACE(destination.path);
        const Bytes profile = InstalledProfile(destination.path);
        ASSERT_FALSE(profile.empty()) << "icc-profiles-free is installed whole";
        Transform transform = MakeTransform({&srgb, &profile}, {INTENT_RELATIVE_COLORIMETRIC});
        const size_t channels = destination.cmyk ? 4 : 3;
        Bytes ours(count_ * channels);
        ASSERT_TRUE(TranslatePacked(transform, rgb_.data(), BM_BGRTRIPLETS, count_, 1, ours.data(),
                                    destination.cmyk ? BM_KYMCQUADS : BM_BGRTRIPLETS));
        const Values lab =
            RunTool("xicclu -v0 -ff -ir -pl " + Quoted(kFreeSrgb), AsValues(rgb_, 3, 1.0 / 255), Scratch());
        ASSERT_EQ(lab.size(), count_);
        const Values argyll = RunTool("xicclu -v0 -fb -ir -pl " + Quoted(destination.path), lab, Scratch());
        ASSERT_EQ(argyll.size(), count_);

        const DeltaE delta = Compare(ToLab(profile, AsValues(ours, channels, 1.0 / 255), destination.cmyk),
                                     ToLab(profile, argyll, destination.cmyk));
        const std::string space = destination.cmyk ? "Fogra39" : "AdobeRgb";
        RecordProperty("meanDeltaE00" + space, std::to_string(delta.mean));
        RecordProperty("maxDeltaE00" + space, std::to_string(delta.max));
        EXPECT_LT(delta.mean, destination.meanLimit);
        EXPECT_LT(delta.max, destination.maxLimit);
    }
}

}  // namespace
}  // namespace tesk::test
