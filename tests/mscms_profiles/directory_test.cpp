// The colour directory and its built-in sRGB profile, standard profiles,
// install/uninstall, device associations and logical colour spaces.
#include <gtest/gtest.h>
#include <lcms2.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "profile_helpers.h"
#include "support/temp_env.h"

namespace fs = std::filesystem;

namespace tesk::test {
namespace {

const char kSrgbName[] = "sRGB Color Space Profile.icm";
const char kCmykName[] = "ISO Coated (FOGRA39).icc";

std::wstring WindowsForm(const std::string& path) {
    std::wstring wide = Wide(path);
    std::replace(wide.begin(), wide.end(), L'/', L'\\');
    return wide;
}

class ColorDirectoryTest : public IsolatedTest {
protected:
    std::string InstallCmyk() {
        const std::string source = env_.Root() + "/" + kCmykName;
        fs::copy_file(DataPath(std::string("ColorProfile/") + kCmykName), source);
        EXPECT_TRUE(InstallColorProfileW(nullptr, Wide(source).c_str()));
        return source;
    }
    nlohmann::json Associations() {
        std::ifstream in(env_.ConfigDir() + "/teskcolor/device_profiles.json");
        return in ? nlohmann::json::parse(in) : nlohmann::json::object();
    }
};

TEST_F(ColorDirectoryTest, DirectoryIsCreatedAndReportedInWindowsForm) {
    EXPECT_FALSE(fs::exists(env_.ColorDir()));
    DWORD size = 0;
    EXPECT_TRUE(FailsWith(GetColorDirectoryW(nullptr, nullptr, &size), ERROR_INSUFFICIENT_BUFFER));
    const std::wstring expected = WindowsForm(env_.ColorDir());
    EXPECT_EQ(size, sizeof(WCHAR) * (expected.size() + 1));
    std::vector<wchar_t> buffer(size / sizeof(WCHAR));
    ASSERT_TRUE(GetColorDirectoryW(nullptr, buffer.data(), &size));
    EXPECT_EQ(std::wstring(buffer.data()), expected);
    EXPECT_TRUE(fs::is_regular_file(env_.ColorDir() + "/" + kSrgbName));

    unsetenv("TESK_COLOR_DIR");
    std::vector<wchar_t> fallback(1024);
    size = 2048;
    ASSERT_TRUE(GetColorDirectoryW(nullptr, fallback.data(), &size));
    EXPECT_EQ(std::wstring(fallback.data()), WindowsForm(env_.Root() + "/data/icc"));
    EXPECT_FALSE(GetColorDirectoryW(L"otherhost", fallback.data(), &size));
}

TEST_F(ColorDirectoryTest, BuiltInSrgbIsRecognisedByTheEngine) {
    DWORD size = 1024;
    std::vector<wchar_t> name(512);
    ASSERT_TRUE(GetStandardColorSpaceProfileW(nullptr, LCS_sRGB, name.data(), &size));
    EXPECT_EQ(std::wstring(name.data()), WindowsForm(env_.ColorDir() + "/" + kSrgbName));
    const Bytes bytes = ReadBytes(env_.ColorDir() + "/" + kSrgbName);
    EXPECT_TRUE(IsValid(bytes));

    // Required tags are checked by IsValid, the primaries by the conversion below.
    cmsHPROFILE builtIn = cmsOpenProfileFromMem(bytes.data(), static_cast<cmsUInt32Number>(bytes.size()));
    ASSERT_NE(builtIn, nullptr);
    EXPECT_EQ(cmsGetEncodedICCversion(builtIn), 0x02100000u);
    EXPECT_EQ(cmsGetDeviceClass(builtIn), cmsSigDisplayClass);
    EXPECT_EQ(cmsGetColorSpace(builtIn), cmsSigRgbData);
    EXPECT_EQ(cmsGetPCS(builtIn), cmsSigXYZData);

    // 1024 samples close enough to the sRGB formula to be told from a gamma.
    auto* curve = static_cast<cmsToneCurve*>(cmsReadTag(builtIn, cmsSigRedTRCTag));
    ASSERT_NE(curve, nullptr);
    ASSERT_EQ(cmsGetToneCurveEstimatedTableEntries(curve), 1024u);
    const cmsUInt16Number* table = cmsGetToneCurveEstimatedTable(curve);
    double sum = 0;
    for (int i = 0; i < 1024; ++i) {
        const double x = i / 1023.0;
        const double srgb = x <= 0.04045 ? x / 12.92 : std::pow((x + 0.055) / 1.055, 2.4);
        sum += std::pow(srgb - table[i] / 65535.0, 2);
    }
    EXPECT_LT(std::sqrt(sum / 1024), 4.4e-6);

    // Converts like the engine's own sRGB within a code value.
    cmsHPROFILE reference = cmsCreate_sRGBProfile();
    cmsHPROFILE lab = cmsCreateLab4Profile(nullptr);
    cmsHTRANSFORM ours = cmsCreateTransform(builtIn, TYPE_RGB_8, lab, TYPE_Lab_DBL, INTENT_RELATIVE_COLORIMETRIC, 0);
    cmsHTRANSFORM theirs =
        cmsCreateTransform(reference, TYPE_RGB_8, lab, TYPE_Lab_DBL, INTENT_RELATIVE_COLORIMETRIC, 0);
    ASSERT_TRUE(ours && theirs);
    double worst = 0;
    for (int r = 0; r < 256; r += 51)
        for (int g = 0; g < 256; g += 51)
            for (int b = 0; b < 256; b += 51) {
                const uint8_t rgb[3] = {uint8_t(r), uint8_t(g), uint8_t(b)};
                cmsCIELab a, c;
                cmsDoTransform(ours, rgb, &a, 1);
                cmsDoTransform(theirs, rgb, &c, 1);
                worst = std::max(worst, cmsDeltaE(&a, &c));
            }
    EXPECT_LT(worst, 0.5);
    cmsDeleteTransform(ours);
    cmsDeleteTransform(theirs);
    cmsCloseProfile(lab);
    cmsCloseProfile(reference);
    cmsCloseProfile(builtIn);
}

TEST_F(ColorDirectoryTest, StandardProfilesCanBeChosen) {
    DWORD size = 1024;
    std::vector<wchar_t> name(512);
    ASSERT_TRUE(GetStandardColorSpaceProfileW(nullptr, LCS_WINDOWS_COLOR_SPACE, name.data(), &size));
    EXPECT_EQ(std::wstring(name.data()), WindowsForm(env_.ColorDir() + "/" + kSrgbName));
    size = 1024;
    EXPECT_FALSE(GetStandardColorSpaceProfileW(nullptr, SPACE_CMYK, name.data(), &size));
    size = 4;
    EXPECT_FALSE(GetStandardColorSpaceProfileW(nullptr, LCS_sRGB, name.data(), &size));
    EXPECT_EQ(GetLastError(), DWORD(ERROR_INSUFFICIENT_BUFFER));

    InstallCmyk();
    EXPECT_TRUE(FailsWith(SetStandardColorSpaceProfileW(nullptr, SPACE_CMYK, L"missing.icc"), ERROR_FILE_NOT_FOUND));
    ASSERT_TRUE(SetStandardColorSpaceProfileW(nullptr, SPACE_CMYK, Wide(kCmykName).c_str()));
    size = 1024;
    ASSERT_TRUE(GetStandardColorSpaceProfileW(nullptr, SPACE_CMYK, name.data(), &size));
    EXPECT_EQ(std::wstring(name.data()), WindowsForm(env_.ColorDir() + "/" + kCmykName));
}

TEST_F(ColorDirectoryTest, InstallAndUninstall) {
    const std::string source = InstallCmyk();
    const std::string installed = env_.ColorDir() + "/" + kCmykName;
    EXPECT_EQ(ReadBytes(installed), ReadBytes(source));

    const std::string broken = env_.Root() + "/broken.icc";
    Bytes bytes = SrgbProfileBytes();
    bytes[36] = 'x';
    WriteBytes(broken, bytes);
    EXPECT_TRUE(FailsWith(InstallColorProfileW(nullptr, Wide(broken).c_str()), ERROR_INVALID_PROFILE));
    EXPECT_FALSE(fs::exists(env_.ColorDir() + "/broken.icc"));
    EXPECT_FALSE(InstallColorProfileW(nullptr, Wide(env_.Root() + "/none.icc").c_str()));
    EXPECT_EQ(GetLastError(), DWORD(ERROR_FILE_NOT_FOUND));

    // Uninstalled but kept: the file stays, the profile no longer counts.
    ASSERT_TRUE(AssociateColorProfileWithDeviceW(nullptr, Wide(kCmykName).c_str(), L"Printer"));
    ASSERT_TRUE(UninstallColorProfileW(nullptr, Wide(kCmykName).c_str(), FALSE));
    EXPECT_TRUE(fs::exists(installed));
    EXPECT_TRUE(Associations()["Printer"].empty());
    EXPECT_FALSE(AssociateColorProfileWithDeviceW(nullptr, Wide(kCmykName).c_str(), L"Printer"));
    EXPECT_TRUE(FailsWith(UninstallColorProfileW(nullptr, Wide(kCmykName).c_str(), FALSE), ERROR_PROFILE_NOT_FOUND));

    // Installed again (from the directory itself), then removed for good.
    ASSERT_TRUE(InstallColorProfileW(nullptr, WindowsForm(installed).c_str()));
    ASSERT_TRUE(UninstallColorProfileW(nullptr, WindowsForm(installed).c_str(), TRUE));
    EXPECT_FALSE(fs::exists(installed));
}

TEST_F(ColorDirectoryTest, AssociationsKeepTheirOrderPerDevice) {
    InstallCmyk();
    const std::wstring srgb = Wide(kSrgbName), cmyk = Wide(kCmykName);
    ASSERT_TRUE(AssociateColorProfileWithDeviceW(nullptr, cmyk.c_str(), L"\\\\.\\DISPLAY1"));
    ASSERT_TRUE(AssociateColorProfileWithDeviceW(nullptr, srgb.c_str(), L"\\\\.\\DISPLAY1"));
    ASSERT_TRUE(AssociateColorProfileWithDeviceW(nullptr, cmyk.c_str(), L"\\\\.\\DISPLAY1"));  // already there
    ASSERT_TRUE(AssociateColorProfileWithDeviceW(nullptr, srgb.c_str(), L"Printer"));
    EXPECT_EQ(Associations()["\\\\.\\DISPLAY1"], (nlohmann::json{kCmykName, kSrgbName}));

    EXPECT_FALSE(AssociateColorProfileWithDeviceW(nullptr, L"unknown.icc", L"Printer"));
    EXPECT_EQ(GetLastError(), DWORD(ERROR_PROFILE_NOT_FOUND));
    EXPECT_TRUE(FailsWith(AssociateColorProfileWithDeviceW(nullptr, srgb.c_str(), nullptr), ERROR_INVALID_PARAMETER));

    ASSERT_TRUE(DisassociateColorProfileFromDeviceW(nullptr, cmyk.c_str(), L"\\\\.\\DISPLAY1"));
    EXPECT_EQ(Associations()["\\\\.\\DISPLAY1"], (nlohmann::json{kSrgbName}));
    EXPECT_FALSE(DisassociateColorProfileFromDeviceW(nullptr, cmyk.c_str(), L"\\\\.\\DISPLAY1"));
    EXPECT_EQ(GetLastError(), DWORD(ERROR_PROFILE_NOT_ASSOCIATED_WITH_DEVICE));
    EXPECT_EQ(Associations()["Printer"], (nlohmann::json{kSrgbName}));
}

LOGCOLORSPACEW LogColorSpace(LCSCSTYPE type) {
    LOGCOLORSPACEW lcs{};
    lcs.lcsSignature = LCS_SIGNATURE;
    lcs.lcsVersion = 0x400;
    lcs.lcsSize = sizeof(lcs);
    lcs.lcsCSType = type;
    return lcs;
}

CIEXYZ Endpoint(double x, double y) {
    auto fixed = [](double v) { return static_cast<FXPT2DOT30>(std::lround(v * (1 << 30))); };
    return {fixed(x), fixed(y), fixed(1 - x - y)};
}

TEST_F(ColorDirectoryTest, ProfilesFromLogicalColorSpaces) {
    LOGCOLORSPACEW lcs = LogColorSpace(LCS_sRGB);
    PBYTE block = nullptr;
    ASSERT_TRUE(CreateProfileFromLogColorSpaceW(&lcs, &block));
    DWORD size = 0;
    GetColorDirectoryW(nullptr, nullptr, &size);  // seeds the directory
    const Bytes srgb = ReadBytes(env_.ColorDir() + "/" + kSrgbName);
    ASSERT_EQ(LocalSize(block), srgb.size());
    EXPECT_TRUE(std::equal(srgb.begin(), srgb.end(), block));
    EXPECT_EQ(LocalFree(block), nullptr);

    // Calibrated RGB with sRGB's primaries and a 2.2 gamma.
    lcs = LogColorSpace(LCS_CALIBRATED_RGB);
    lcs.lcsEndpoints = {Endpoint(0.64, 0.33), Endpoint(0.30, 0.60), Endpoint(0.15, 0.06)};
    lcs.lcsGammaRed = lcs.lcsGammaGreen = lcs.lcsGammaBlue = 0x23333;
    ASSERT_TRUE(CreateProfileFromLogColorSpaceW(&lcs, &block));
    const Bytes calibrated(block, block + LocalSize(block));
    LocalFree(block);
    EXPECT_TRUE(IsValid(calibrated));
    HPROFILE ours = OpenMemory(calibrated), reference = OpenMemory(srgb);
    ASSERT_TRUE(ours && reference);
    for (TAGTYPE tag : {'rXYZ', 'gXYZ', 'bXYZ', 'wtpt'}) {
        const Bytes a = TagOf(ours, tag), b = TagOf(reference, tag);
        ASSERT_EQ(a.size(), 20u);
        for (size_t i = 8; i < 20; i += 4) EXPECT_NEAR(double(int32_t(BE32(a, i))), double(int32_t(BE32(b, i))), 2);
    }
    EXPECT_EQ(TagOf(ours, 'gTRC'), (Bytes{'c', 'u', 'r', 'v', 0, 0, 0, 0, 0, 0, 0, 1, 0x02, 0x33}));
    CloseColorProfile(ours);
    CloseColorProfile(reference);

    // A profile named in the record stands for the space.
    lcs = LogColorSpace(LCS_CALIBRATED_RGB);
    const std::wstring path = Wide(DataPath(std::string("ColorProfile/") + kCmykName));
    std::copy(path.begin(), path.end(), lcs.lcsFilename);
    ASSERT_TRUE(CreateProfileFromLogColorSpaceW(&lcs, &block));
    const Bytes cmyk = ReadBytes(DataPath(std::string("ColorProfile/") + kCmykName));
    EXPECT_TRUE(std::equal(cmyk.begin(), cmyk.end(), block));
    LocalFree(block);

    lcs = LogColorSpace(LCS_CALIBRATED_RGB);  // all endpoints zero
    EXPECT_TRUE(FailsWith(CreateProfileFromLogColorSpaceW(&lcs, &block), ERROR_INVALID_COLORSPACE));
    lcs = LogColorSpace(LCS_sRGB);
    lcs.lcsSignature = 0;
    EXPECT_FALSE(CreateProfileFromLogColorSpaceW(&lcs, &block));
    EXPECT_TRUE(FailsWith(CreateProfileFromLogColorSpaceW(nullptr, &block), ERROR_INVALID_PARAMETER));
}

}  // namespace
}  // namespace tesk::test
