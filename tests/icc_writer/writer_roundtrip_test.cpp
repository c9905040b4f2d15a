// Profiles made by the writer read back with the same values through the
// module's reader, through Little CMS and through ArgyllCMS iccdump.
#include <gtest/gtest.h>
#include <lcms2.h>
#include <tesk/path.h>

#include <cmath>
#include <filesystem>
#include <memory>
#include <vector>

#include "icc/ICCReadColorProfile.h"
#include "icc/ICCWriteColorProfile.h"
#include "support/temp_env.h"
#include "written_profile.h"

namespace {

using tesk::test::RunIccDump;

constexpr double kFixedStep = 1.0 / 65536.0;

struct LcmsProfile {
    explicit LcmsProfile(const std::string& path) : handle(cmsOpenProfileFromFile(path.c_str(), "r")) {}
    ~LcmsProfile() {
        if (handle) cmsCloseProfile(handle);
    }
    cmsHPROFILE handle;
};

class ReadBack : public tesk::test::IsolatedTest {
protected:
    // Opens a profile of the colour directory in a reader that owns it.
    void OpenReader(const wchar_t* name) {
        void* handle = reader_.OpenICCProfile(const_cast<wchar_t*>(name));
        ASSERT_NE(handle, nullptr);
        reader_.SetProfile(handle, const_cast<wchar_t*>(name));
    }
    std::string ColorPath(const std::string& name) const { return env_.ColorDir() + "/" + name; }

    void ExpectXYZ(unsigned long tag, double x, double y, double z) {
        SMyXYZNumber xyz{};
        ASSERT_TRUE(reader_.GetXYZColorant(xyz, tag)) << std::hex << tag;
        EXPECT_NEAR(xyz.X, x, kFixedStep) << std::hex << tag;
        EXPECT_NEAR(xyz.Y, y, kFixedStep) << std::hex << tag;
        EXPECT_NEAR(xyz.Z, z, kFixedStep) << std::hex << tag;
    }

    void ExpectIccDumpClean(const std::string& path) {
        const auto dump = RunIccDump(path);
        if (!dump) GTEST_SKIP() << "ArgyllCMS iccdump is not installed";
        EXPECT_TRUE(dump->clean) << dump->output;
    }

    CICCReadColorProfile reader_;
};

TEST_F(ReadBack, SelfCheckProfileCarriesEveryTagItWrote) {
    CICCWriteColorProfile writer;
    ASSERT_TRUE(writer.TestWriteProfile());
    EXPECT_EQ(writer.GetProfile(), nullptr) << "a finished write leaves the writer empty";
    const std::string path = ColorPath("TestWriteProfile.icm");
    ASSERT_TRUE(std::filesystem::exists(path));

    OpenReader(L"TestWriteProfile.icm");
    CString text;
    ASSERT_TRUE(reader_.GetDescription(text));
    EXPECT_EQ(text, L"Lorn's Test ICC profile.");
    ASSERT_TRUE(reader_.GetCopyright(text));
    EXPECT_EQ(text.Left(9), L"Copyright");

    for (unsigned long tag : {'rTRC', 'gTRC', 'bTRC'}) {
        TRCCURVE curve{};
        ASSERT_TRUE(reader_.GetTRC(tag, curve));
        ASSERT_EQ(curve.m_nSignature, kCurveTypeSignature);
        ASSERT_EQ(curve.m_curve.m_nCount, 1u);
        EXPECT_FLOAT_EQ(curve.m_curve.m_fGamma, 2.19921875f) << "2.2 as u8Fixed8 is 0x0233";
    }
    ExpectXYZ('rXYZ', 0.436066, 0.222488, 0.013916);
    ExpectXYZ('gXYZ', 0.385147, 0.716873, 0.097076);
    ExpectXYZ('bXYZ', 0.143066, 0.060608, 0.714096);
    ExpectXYZ('wtpt', 0.964203, 1.0, 0.824905);
    ExpectXYZ('bkpt', 0.0, 0.0, 0.0);

    // The reader takes words as unsigned (negatives come back 65536 higher);
    // Little CMS reads them signed.
    const double adaptation[9] = {1.047882, 0.022919, -0.050201, 0.029587, 0.990479,
                                  -0.017059, -0.009232, 0.015076, 0.751678};
    double matrix[9] = {};
    ASSERT_TRUE(reader_.GetChromaticAdaptationTag(matrix));
    for (int i = 0; i < 9; ++i)
        EXPECT_NEAR(matrix[i], adaptation[i] < 0 ? adaptation[i] + 65536.0 : adaptation[i], kFixedStep) << i;

    ASSERT_TRUE(reader_.DoesProfileTagExist('vcgt'));
    SVCGTGamma ramp{};
    ASSERT_TRUE(reader_.GetVCGTTable(ramp));
    EXPECT_EQ(ramp.m_nGammaType, kVCGTFormula);
    EXPECT_EQ((std::vector<uint32_t>{ramp.m_formula.m_nRedGamma, ramp.m_formula.m_nGreenMin, ramp.m_formula.m_nBlueMax}),
              (std::vector<uint32_t>{0x10000, 0, 0x10000}));

    reader_.CloseProfile();
    CString name(L"TestWriteProfile.icm");
    EXPECT_TRUE(reader_.IsProfileWorkingSpace(name));

    LcmsProfile lcms(path);
    ASSERT_NE(lcms.handle, nullptr);
    const auto* chad = static_cast<const double*>(cmsReadTag(lcms.handle, cmsSigChromaticAdaptationTag));
    ASSERT_NE(chad, nullptr);
    for (int i = 0; i < 9; ++i) EXPECT_NEAR(chad[i], adaptation[i], kFixedStep) << i;

    // The profile works as a transform's destination.
    cmsHPROFILE srgb = cmsCreate_sRGBProfile();
    cmsHTRANSFORM transform = cmsCreateTransform(srgb, TYPE_RGB_8, lcms.handle, TYPE_RGB_8, INTENT_PERCEPTUAL, 0);
    EXPECT_NE(transform, nullptr);
    if (transform) cmsDeleteTransform(transform);
    cmsCloseProfile(srgb);

    ExpectIccDumpClean(path);
}

// A profile built tag by tag: sampled curves, colorants, white point, a
// table vcgt and a header from the writer's own fields.
TEST_F(ReadBack, ProfileBuiltTagByTagKeepsCurvesColorantsAndGammaTable) {
    const std::string path = ColorPath("built.icc");
    CICCWriteColorProfile writer;
    ASSERT_TRUE(writer.OpenICCProfileForWrite(tesk::path::ToWindows(path).c_str()));

    const double exponents[3] = {1.8, 2.2, 2.6};
    const uint32_t counts[3] = {256, 1024, 37};
    std::vector<uint16_t> entries[3];
    const unsigned long trcTags[3] = {'rTRC', 'gTRC', 'bTRC'};
    for (int c = 0; c < 3; ++c) {
        for (uint32_t i = 0; i < counts[c]; ++i)
            entries[c].push_back(static_cast<uint16_t>(
                std::lround(65535.0 * std::pow(double(i) / (counts[c] - 1), exponents[c]))));
        SICCCurveType curve{counts[c], entries[c].data(), 0.0f};
        ASSERT_TRUE(writer.SetTRCCurveType(trcTags[c], curve));
    }
    // Values on the s15Fixed16 grid come back exactly.
    SMyXYZNumber red{28576 / 65536.0, 14582 / 65536.0, 912 / 65536.0};
    SMyXYZNumber green{25241 / 65536.0, 46981 / 65536.0, 6362 / 65536.0};
    SMyXYZNumber blue{9376 / 65536.0, 3972 / 65536.0, 46799 / 65536.0};
    SMyXYZNumber white{63190 / 65536.0, 1.0, 54061 / 65536.0};
    ASSERT_TRUE(writer.SetXYZColorant(red, 'rXYZ') && writer.SetXYZColorant(green, 'gXYZ') &&
                writer.SetXYZColorant(blue, 'bXYZ') && writer.SetMediaWhitePoint(white));

    std::vector<uint16_t> ramp(3 * 256);
    for (size_t i = 0; i < ramp.size(); ++i) ramp[i] = static_cast<uint16_t>((i % 256) * 257 + i / 256);
    SVCGTGamma vcgt{};
    vcgt.m_nGammaType = kVCGTTable;
    vcgt.m_table = {3, 256, 2, ramp.data()};
    ASSERT_TRUE(writer.SetVCGTInformation(vcgt));

    std::list<std::string> description{"Built tag by tag"};
    std::list<std::string> copyright{"No copyright"};
    ASSERT_TRUE(writer.SetStringTag('desc', description) && writer.SetCopyrightTag('cprt', copyright));
    writer.SetHeaderRenderingIntent(INTENT_RELATIVE_COLORIMETRIC);
    writer.SetHeaderManufacturer('TESK');
    writer.SetHeaderModel(7);
    writer.SetHeaderAttributes(true, false, true, true);
    unsigned long dateTime[3] = {(2024ul << 16) | 2, (29ul << 16) | 13, (45ul << 16) | 30};
    writer.SetHeaderDateTime(dateTime, 3);
    PROFILEHEADER header;
    writer.CreateProfileHeader(header);
    ASSERT_TRUE(writer.SetProfileHeader(header));
    ASSERT_EQ(writer.FinalizeProfileWrite(), CM_PROFILE_VALID);

    OpenReader(tesk::path::ToWindows(path).c_str());
    for (int c = 0; c < 3; ++c) {
        TRCCURVE curve{};
        ASSERT_TRUE(reader_.GetTRC(trcTags[c], curve));
        ASSERT_EQ(curve.m_nSignature, kCurveTypeSignature);
        std::unique_ptr<uint16_t[]> owned(curve.m_curve.m_pEntries);
        ASSERT_EQ(curve.m_curve.m_nCount, counts[c]);
        EXPECT_EQ(std::vector<uint16_t>(owned.get(), owned.get() + counts[c]), entries[c]) << c;
    }
    SMyXYZNumber xyz{};
    ASSERT_TRUE(reader_.GetXYZColorant(xyz, 'gXYZ'));
    EXPECT_EQ((std::vector<double>{xyz.X, xyz.Y, xyz.Z}), (std::vector<double>{green.X, green.Y, green.Z}));
    ASSERT_TRUE(reader_.GetMediaWhitePoint(xyz));
    EXPECT_EQ(xyz.Z, white.Z);

    // The table goes out in host order and the reader swaps each entry, so
    // an entry comes back with its bytes exchanged; the rest of the doubled
    // buffer stays zero.
    SVCGTGamma table{};
    ASSERT_TRUE(reader_.GetVCGTTable(table));
    std::unique_ptr<uint16_t[]> values(table.m_table.m_pData);
    ASSERT_EQ(table.m_nGammaType, kVCGTTable);
    EXPECT_EQ((std::vector<int>{table.m_table.m_nChannels, table.m_table.m_nEntryCount, table.m_table.m_nEntrySize}),
              (std::vector<int>{3, 256, 2}));
    for (size_t i = 0; i < ramp.size(); ++i)
        ASSERT_EQ(values[i], static_cast<uint16_t>((ramp[i] >> 8) | (ramp[i] << 8))) << i;
    for (size_t i = ramp.size(); i < 2 * ramp.size(); ++i) ASSERT_EQ(values[i], 0) << i;

    LcmsProfile lcms(path);
    ASSERT_NE(lcms.handle, nullptr);
    EXPECT_EQ(cmsGetHeaderRenderingIntent(lcms.handle), static_cast<cmsUInt32Number>(INTENT_RELATIVE_COLORIMETRIC));
    EXPECT_EQ(cmsGetHeaderManufacturer(lcms.handle), static_cast<cmsUInt32Number>('TESK'));
    EXPECT_EQ(cmsGetHeaderModel(lcms.handle), 7u);
    cmsUInt64Number attributes = 0;
    cmsGetHeaderAttributes(lcms.handle, &attributes);
    EXPECT_EQ(attributes, 2u) << "not glossy is ICC's matte bit";
    tm created{};
    ASSERT_TRUE(cmsGetHeaderCreationDateTime(lcms.handle, &created));
    EXPECT_EQ((std::vector<int>{created.tm_year + 1900, created.tm_mon + 1, created.tm_mday, created.tm_hour,
                                created.tm_min}),
              (std::vector<int>{2024, 2, 29, 13, 45}));

    ExpectIccDumpClean(path);
}

}  // namespace
