// Real-world profiles: the reader's view of each is kept as a text dump under
// golden/ and must not drift; colorants and texts must agree with Little CMS.
// TESK_UPDATE_GOLDEN=1 rewrites the dumps (CorpusGolden.Regenerate).
#include <gtest/gtest.h>
#include <tesk/path.h>

#include <lcms2.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "icc/ICCReadColorProfile.h"
#include "icc/TagDecoders.h"
#include "support/temp_env.h"

namespace fs = std::filesystem;

namespace {

struct Group {
    const char* name;
    std::string folder;
};

std::vector<Group> Groups() {
    return {{"colord", "/usr/share/color/icc/colord"},
            {"icc-profiles-free", "/usr/share/color/icc"},
            {"ghostscript", "/usr/share/color/icc/ghostscript"},
            {"data", std::string(TESK_SOURCE_DIR) + "/data/ColorProfile"}};
}

const fs::path kGoldenRoot = fs::path(TESK_SOURCE_DIR) / "tests/icc/golden";

struct CorpusEntry {
    std::string group;
    std::string file;
    fs::path Profile() const {
        for (const Group& g : Groups())
            if (group == g.name) return fs::path(g.folder) / file;
        return {};
    }
    fs::path Golden() const { return kGoldenRoot / group / (file + ".txt"); }
};

// The reader takes colorants as unsigned: a negative value comes back 65536 higher.
double AsUnsigned(double value) { return value < 0 ? value + 65536.0 : value; }

void PrintTo(const CorpusEntry& entry, std::ostream* out) { *out << entry.group << "/" << entry.file; }

std::vector<CorpusEntry> GoldenEntries() {
    std::vector<CorpusEntry> entries;
    if (!fs::is_directory(kGoldenRoot)) return entries;
    for (const auto& groupDir : fs::directory_iterator(kGoldenRoot)) {
        if (!groupDir.is_directory()) continue;
        for (const auto& golden : fs::directory_iterator(groupDir.path())) {
            std::string name = golden.path().filename().string();
            if (name.size() > 4 && name.ends_with(".txt"))
                entries.push_back({groupDir.path().filename().string(), name.substr(0, name.size() - 4)});
        }
    }
    std::sort(entries.begin(), entries.end(),
              [](const CorpusEntry& a, const CorpusEntry& b) { return a.Golden() < b.Golden(); });
    return entries;
}

std::string FourCC(uint32_t value) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) {
        char c = char((value >> shift) & 0xFF);
        text += (c >= 0x20 && c < 0x7F) ? c : '?';
    }
    return text;
}

std::string Format(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string Format(const char* format, ...) {
    char buffer[512];
    va_list args;
    va_start(args, format);
    vsnprintf(buffer, sizeof buffer, format, args);
    va_end(args);
    return buffer;
}

// A widened single-byte text back to its bytes; other text as UTF-8.
std::string Narrow(const CString& text) {
    std::string bytes;
    for (wchar_t c : text.Str()) bytes += c < 0x100 ? std::string(1, char(c)) : tesk::path::Utf8(std::wstring(1, c));
    return bytes;
}

std::string Escape(const std::string& text) {
    std::string out;
    for (char c : text) out += c == '\n' ? "\\n" : c == '\r' ? "\\r" : c == '\\' ? "\\\\" : std::string(1, c);
    return out;
}

std::string CurveLine(CICCReadColorProfile& reader, uint32_t tag) {
    TRCCURVE curve;
    std::memset(&curve, 0, sizeof curve);
    if (!reader.GetTRC(tag, curve)) {
        if (curve.m_nSignature == 'curv' && curve.m_curve.m_nCount >= 2) delete[] curve.m_curve.m_pEntries;
        return "unreadable";
    }
    std::string line;
    if (curve.m_nSignature == 'para') {
        line = Format("para type %u, params %u, g %.6f", curve.m_para.m_nFunctionType, curve.m_para.m_nParamCount,
                      curve.m_para.m_dG);
    } else {
        const SICCCurveType& c = curve.m_curve;
        if (c.m_nCount == 0) line = "curv identity";
        else if (c.m_nCount == 1) line = Format("curv gamma %.8f", c.m_fGamma);
        else
            line = Format("curv %u entries, fitted gamma %.6f", c.m_nCount, tesk::icc::FitGamma(c));
        line += tesk::icc::IsSrgbCurve(c) ? ", sRGB yes" : ", sRGB no";
        if (c.m_nCount >= 2) delete[] c.m_pEntries;
    }
    return line;
}

std::string XYZLine(CICCReadColorProfile& reader, uint32_t tag) {
    SMyXYZNumber xyz{};
    if (!reader.GetXYZColorant(xyz, tag)) return "none";
    return Format("%.8f %.8f %.8f", xyz.X, xyz.Y, xyz.Z);
}

std::string Dump(const fs::path& path) {
    std::vector<uint8_t> bytes = tesk::test::ReadBytes(path.string());
    std::ostringstream out;
    CICCReadColorProfile reader;
    bool valid = true;
    const bool opened = reader.CreateFromRawData(bytes.data(), static_cast<unsigned long>(bytes.size()), valid);
    out << "opened: " << (opened ? "yes" : "no") << (valid ? "" : " (invalid)") << "\n";
    if (opened) {
        void* handle = reader.GetProfile();
        // The header as the platform hands the profile back.
        unsigned long size = 0;
        reader.GetProfile(handle, nullptr, &size);
        std::vector<unsigned char> current(size);
        reader.GetProfile(handle, current.data(), &size);
        const tesk::icc::TagBytes view(current.data(), current.size());
        const uint32_t version = view.U32(8);
        out << "class: " << FourCC(view.U32(12)) << "\n";
        out << "colour space: " << FourCC(view.U32(16)) << "\n";
        out << "connection space: " << FourCC(view.U32(20)) << "\n";
        out << Format("version: %u.%u.%u\n", version >> 24, (version >> 20) & 0xF, (version >> 16) & 0xF);
        CString text;
        out << "description: " << (reader.GetDescription(text) ? Escape(Narrow(text)) : "(none)") << "\n";
        text.Empty();
        out << "copyright: " << (reader.GetCopyright(text) ? Escape(Narrow(text)) : "(none)") << "\n";
        out << "tags: " << reader.GetNumberOfTags(handle) << "\n";
        for (uint32_t tag : {uint32_t('rTRC'), uint32_t('gTRC'), uint32_t('bTRC')})
            out << FourCC(tag) << ": " << CurveLine(reader, tag) << "\n";
        for (uint32_t tag : {uint32_t('rXYZ'), uint32_t('gXYZ'), uint32_t('bXYZ'), uint32_t('wtpt')})
            out << FourCC(tag) << ": " << XYZLine(reader, tag) << "\n";
        const long type = reader.GetLCSCSType(handle);
        out << "LCS type: " << (type == LCS_sRGB ? "sRGB" : Format("%ld", type)) << "\n";
    }
    CString name(tesk::path::ToWindows(path.string()).c_str());
    CICCReadColorProfile classifier;
    out << "working space: " << (classifier.IsProfileWorkingSpace(name) ? "yes" : "no") << "\n";
    out << "CMYK: " << (classifier.IsProfileCMYK(name) ? "yes" : "no") << "\n";
    return out.str();
}

std::string ReadText(const fs::path& path) {
    std::stringstream content;
    content << std::ifstream(path, std::ios::binary).rdbuf();
    return content.str();
}

class CorpusProfile : public tesk::test::IsolatedTest, public ::testing::WithParamInterface<CorpusEntry> {};

std::string TestName(const ::testing::TestParamInfo<CorpusEntry>& info) {
    std::string name = info.param.group + "_" + info.param.file;
    for (char& c : name)
        if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
    return name;
}

}  // namespace

TEST_P(CorpusProfile, DumpMatchesGolden) {
    const CorpusEntry& entry = GetParam();
    if (!fs::exists(entry.Profile())) GTEST_SKIP() << entry.Profile() << " is not installed";
    EXPECT_EQ(Dump(entry.Profile()), ReadText(entry.Golden())) << entry.Profile();
}

INSTANTIATE_TEST_SUITE_P(Installed, CorpusProfile, ::testing::ValuesIn(GoldenEntries()), TestName);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(CorpusProfile);

TEST(CorpusGolden, Regenerate) {
    if (!std::getenv("TESK_UPDATE_GOLDEN")) GTEST_SKIP() << "set TESK_UPDATE_GOLDEN=1 to rewrite the dumps";
    tesk::test::TempEnvironment env;
    int written = 0;
    for (const Group& group : Groups()) {
        if (!fs::is_directory(group.folder)) continue;
        for (const auto& file : fs::directory_iterator(group.folder)) {
            std::string extension = file.path().extension().string();
            for (char& c : extension) c = char(std::tolower(static_cast<unsigned char>(c)));
            if (!file.is_regular_file() || (extension != ".icc" && extension != ".icm")) continue;
            CorpusEntry entry{group.name, file.path().filename().string()};
            fs::create_directories(entry.Golden().parent_path());
            std::ofstream(entry.Golden(), std::ios::binary) << Dump(entry.Profile());
            ++written;
        }
    }
    EXPECT_GT(written, 0);
}

namespace {

std::wstring LcmsText(cmsHPROFILE profile, cmsTagSignature tag) {
    auto* mlu = static_cast<cmsMLU*>(cmsReadTag(profile, tag));
    if (!mlu) return {};
    // No language asked for: Little CMS gives the first record, as the reader does.
    cmsUInt32Number bytes = cmsMLUgetWide(mlu, cmsNoLanguage, cmsNoCountry, nullptr, 0);
    std::wstring text(bytes / sizeof(wchar_t), L'\0');
    cmsMLUgetWide(mlu, cmsNoLanguage, cmsNoCountry, text.data(), bytes);
    return text.substr(0, text.find(L'\0'));
}

}  // namespace

// Little CMS as an independent reader of the same profiles.
TEST_P(CorpusProfile, AgreesWithLittleCms) {
    const CorpusEntry& entry = GetParam();
    const fs::path path = entry.Profile();
    if (!fs::exists(path)) GTEST_SKIP() << path << " is not installed";
    std::vector<uint8_t> bytes = tesk::test::ReadBytes(path.string());
    CICCReadColorProfile reader;
    bool valid = true;
    if (!reader.CreateFromRawData(bytes.data(), static_cast<unsigned long>(bytes.size()), valid))
        GTEST_SKIP() << "the platform does not open " << path;
    cmsHPROFILE lcms = cmsOpenProfileFromMem(bytes.data(), static_cast<cmsUInt32Number>(bytes.size()));
    ASSERT_NE(lcms, nullptr);

    const std::pair<uint32_t, cmsTagSignature> points[] = {{'rXYZ', cmsSigRedColorantTag},
                                                            {'gXYZ', cmsSigGreenColorantTag},
                                                            {'bXYZ', cmsSigBlueColorantTag},
                                                            {'wtpt', cmsSigMediaWhitePointTag}};
    for (const auto& [signature, tag] : points) {
        SMyXYZNumber ours{};
        auto* theirs = static_cast<cmsCIEXYZ*>(cmsIsTag(lcms, tag) ? cmsReadTag(lcms, tag) : nullptr);
        ASSERT_EQ(reader.GetXYZColorant(ours, signature), theirs != nullptr) << std::hex << signature;
        if (!theirs) continue;
        EXPECT_NEAR(ours.X, AsUnsigned(theirs->X), 1e-9);
        EXPECT_NEAR(ours.Y, AsUnsigned(theirs->Y), 1e-9);
        EXPECT_NEAR(ours.Z, AsUnsigned(theirs->Z), 1e-9);
    }

    CString description;
    const std::wstring theirDescription = LcmsText(lcms, cmsSigProfileDescriptionTag);
    ASSERT_TRUE(reader.GetDescription(description));
    EXPECT_EQ(description.Str(), theirDescription);
    CString copyright;
    if (reader.GetCopyright(copyright)) {
        EXPECT_EQ(copyright.Str(), LcmsText(lcms, cmsSigCopyrightTag));
    }
    cmsCloseProfile(lcms);
}
