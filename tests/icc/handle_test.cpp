// The profile handle: where names are looked for, who closes what, and how
// each object binds the platform for itself.
#include <tesk/loader.h>
#include <tesk/path.h>

#include <filesystem>
#include <vector>

#include "reader_support.h"
#include "support/temp_env.h"

using namespace tesk::test::icc;
namespace fs = std::filesystem;

namespace {

class ProfileHandle : public tesk::test::IsolatedTest {
protected:
    void SetUp() override { Install(env_.ColorDir(), "A.icm", MatrixDisplay().Build()); }

    std::string Install(const std::string& folder, const std::string& name, const Bytes& bytes) {
        fs::create_directories(folder);
        tesk::test::WriteBytes(folder + "/" + name, bytes);
        return folder + "/" + name;
    }
    void* Open(ReaderProbe& reader, std::wstring name) { return reader.OpenICCProfile(name.data()); }
};

int g_closes = 0;
BOOL WINAPI CountingClose(HPROFILE profile) {
    ++g_closes;
    auto real = reinterpret_cast<BOOL(WINAPI*)(HPROFILE)>(
        reinterpret_cast<void (*)()>(tesk::loader::RealProcAddress(L"MSCMS.DLL", "CloseColorProfile")));
    return real(profile);
}

}  // namespace

TEST_F(ProfileHandle, BareNamesOpenFromTheColourDirectoryOthersAsTheyStand) {
    ReaderProbe reader;
    void* handle = Open(reader, L"A.icm");
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(reader.GetProfile(), nullptr) << "opening does not adopt";
    EXPECT_TRUE(reader.CloseProfile(handle));
    EXPECT_EQ(handle, nullptr);
    EXPECT_EQ(Open(reader, L"Not There.icm"), nullptr);
    EXPECT_EQ(reader.OpenICCProfile(nullptr), nullptr);

    // A backslash or a colon makes the name a path.
    const std::wstring away =
        tesk::path::ToWindows(Install(env_.Root() + "/elsewhere", "Away.icc", MatrixDisplay().Build()));
    for (const std::wstring& name : {away, L"Z:" + away}) {
        handle = Open(reader, name);
        ASSERT_NE(handle, nullptr);
        reader.CloseProfile(handle);
    }
    EXPECT_EQ(Open(reader, L"Away.icc"), nullptr);
}

TEST_F(ProfileHandle, OwnProfilesAreLookedForBesideTheExecutable) {
    ReaderProbe reader;
    CString swop, fogra;
    ASSERT_TRUE(swop.LoadString(10403));
    ASSERT_TRUE(fogra.LoadString(10402));
    EXPECT_EQ(reader.IsCustomColorProfile(swop), 1);
    EXPECT_EQ(reader.IsCustomColorProfile(fogra), 1);
    EXPECT_EQ(reader.IsCustomColorProfile(CString(L"swop coated (tr003).icc")), 0);
    EXPECT_EQ(reader.IsCustomColorProfile(CString(L"sRGB Color Space Profile.icm")), 0);

    wchar_t executable[513] = {};
    GetModuleFileNameW(nullptr, executable, 513);
    CString expected(executable);
    expected = expected.Left(expected.ReverseFind(L'\\')) + L"\\ColorProfile\\";
    CString directory;
    reader.GetColorDirectoryW(directory, swop);
    EXPECT_EQ(directory, expected);
    reader.GetColorDirectoryW(directory, CString(L"anything.icc"));
    EXPECT_EQ(directory, CString(tesk::path::ToWindows(env_.ColorDir())));

    std::wstring name = swop.Str();
    void* handle = reader.OpenICCProfile(name.data());
    ASSERT_NE(handle, nullptr) << "bin/ColorProfile must hold the module's own profiles";
    reader.SetProfile(handle, name.data());
    PROFILEHEADER header;
    ASSERT_TRUE(HeaderOf(reader, header));
    EXPECT_EQ(header.phDataColorSpace, DWORD('CMYK'));
}

TEST_F(ProfileHandle, AnInvalidProfileIsClosedAndNotReturned) {
    ProfileBuilder broken = MatrixDisplay();
    broken.Remove('wtpt');
    Install(env_.ColorDir(), "Broken.icm", broken.Build());
    tesk::loader::Substitute counting;
    counting.overrides["CloseColorProfile"] = reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(&CountingClose));
    tesk::loader::SetSubstitute(L"MSCMS.DLL", counting);
    ReaderProbe reader;
    tesk::loader::ClearSubstitutes();
    g_closes = 0;
    EXPECT_EQ(Open(reader, L"Broken.icm"), nullptr);
    EXPECT_EQ(g_closes, 1);
}

TEST_F(ProfileHandle, SetProfileAdoptsClosingTheOldAndIgnoresNull) {
    ReaderProbe reader;
    std::wstring name = L"A.icm", other = L"other";
    void* first = reader.OpenICCProfile(name.data());
    reader.SetProfile(first, name.data());
    void* none = nullptr;
    reader.SetProfile(none, other.data());
    EXPECT_EQ(reader.GetProfile(), first);
    EXPECT_EQ(reader.m_strProfileName, L"A.icm");

    void* second = reader.OpenICCProfile(name.data());
    reader.SetProfile(second, other.data());
    EXPECT_EQ(reader.GetProfile(), second);
    EXPECT_EQ(reader.m_strProfileName, L"other");
    EXPECT_FALSE(IsOpen(reader, first));
}

TEST_F(ProfileHandle, CloseProfileOfAHandleClearsTheObjectOnlyWhenItIsItsOwn) {
    ReaderProbe reader;
    std::wstring name = L"A.icm";
    void* own = reader.OpenICCProfile(name.data());
    reader.SetProfile(own, name.data());
    void* foreign = reader.OpenICCProfile(name.data());
    EXPECT_TRUE(reader.CloseProfile(foreign));
    EXPECT_EQ(foreign, nullptr);
    EXPECT_EQ(reader.GetProfile(), own);

    void* alias = own;
    EXPECT_TRUE(reader.CloseProfile(alias));
    EXPECT_EQ(reader.GetProfile(), nullptr);
    EXPECT_FALSE(reader.CloseProfile());
    void* none = nullptr;
    EXPECT_FALSE(reader.CloseProfile(none));
}

TEST_F(ProfileHandle, OnlyAnOwningObjectClosesOnDestruction) {
    ReaderProbe opener;
    void* handle = Open(opener, L"A.icm");
    { CICCReadColorProfile borrowing(handle, L"A.icm", false); }
    EXPECT_TRUE(IsOpen(opener, handle));
    { CICCColorProfile owning(handle, nullptr, true); }
    EXPECT_FALSE(IsOpen(opener, handle));
}

TEST(ProfileCopies, CopyRebindsWithoutProfileBytesAssignmentCopiesEveryMember) {
    auto original = ReaderOf(MatrixDisplay().Build());
    ASSERT_NE(original->GetProfile(), nullptr);
    original->m_bOwnsHandle = FALSE;
    ReaderProbe copy(*original);
    EXPECT_EQ(copy.GetProfile(), original->GetProfile());
    EXPECT_EQ(copy.m_bOwnsHandle, TRUE);
    EXPECT_NE(original->m_pfnGetColorProfileFromHandle, nullptr);
    EXPECT_EQ(copy.m_pfnGetColorProfileFromHandle, nullptr);
    EXPECT_NE(copy.m_pfnGetColorProfileElement, nullptr);
    CString text;
    EXPECT_TRUE(copy.GetDescription(text));
    EXPECT_EQ(text, L"Test RGB");

    void* none = nullptr;
    ReaderProbe target(none, L"before", true);
    target = *original;
    EXPECT_EQ(target.GetProfile(), original->GetProfile());
    EXPECT_EQ(target.m_strProfileName, original->m_strProfileName);
    EXPECT_EQ(target.m_bOwnsHandle, FALSE);
    EXPECT_EQ(target.m_pfnGetColorProfileFromHandle, original->m_pfnGetColorProfileFromHandle);
    EXPECT_EQ(target.m_pfnSetColorProfileElementSize, original->m_pfnSetColorProfileElementSize);
}

// Which of the given functions the object bound.
template <typename... Functions>
std::vector<bool> Bound(Functions... functions) {
    return {(functions != nullptr)...};
}

TEST(ProfileBinding, AMissingExportStopsTheChain) {
    tesk::loader::Substitute noDirectory;
    noDirectory.hidden = {"GetColorDirectoryW"};
    tesk::loader::SetSubstitute(L"MSCMS.DLL", noDirectory);
    ReaderProbe r;
    // The reader's own names (the last) are a chain of their own.
    EXPECT_EQ(Bound(r.m_pfnGetColorProfileHeader, r.m_pfnGetColorDirectoryW, r.m_pfnOpenColorProfileW,
                    r.m_pfnGetColorProfileFromHandle, r.m_pfnCreateMultiProfileTransform, r.m_pfnGetColorProfileElement),
              (std::vector<bool>{true, false, false, false, false, true}));

    tesk::loader::Substitute noProfileBytes;
    noProfileBytes.hidden = {"GetColorProfileFromHandle", "CreateMultiProfileTransform", "GetColorProfileElement"};
    tesk::loader::SetSubstitute(L"MSCMS.DLL", noProfileBytes);
    ReaderProbe p;
    EXPECT_EQ(Bound(p.m_pfnOpenColorProfileW, p.m_pfnGetColorProfileFromHandle, p.m_pfnCreateMultiProfileTransform,
                    p.m_pfnDeleteColorTransform, p.m_pfnGetColorProfileElement, p.m_pfnCreateProfileFromLogColorSpaceW,
                    p.m_pfnSetColorProfileElement),
              (std::vector<bool>{true, false, false, false, false, false, false}));
    tesk::loader::ClearSubstitutes();
}

TEST(ProfileBinding, WithoutTheDialogModuleNothingIsBound) {
    tesk::loader::Substitute missing;
    missing.missing = true;
    tesk::loader::SetSubstitute(L"ICMUI.DLL", missing);
    ReaderProbe reader;
    tesk::loader::ClearSubstitutes();
    EXPECT_EQ(Bound(reader.m_pfnGetColorProfileHeader, reader.m_pfnCloseColorProfile, reader.m_pfnGetColorProfileElement),
              std::vector<bool>(3, false));
    // Nothing bound: every query is a plain failure, not a crash.
    std::wstring name = L"x.icc";
    EXPECT_EQ(reader.OpenICCProfile(name.data()), nullptr);
    Bytes bytes = MatrixDisplay().Build();
    bool valid = false;
    EXPECT_FALSE(reader.CreateFromRawData(bytes.data(), static_cast<unsigned long>(bytes.size()), valid));
}

TEST(ProfileQueries, ProfileBytesTagCountAndTransforms) {
    auto reader = ReaderOf(MatrixDisplay().Build());
    void* handle = reader->GetProfile();
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(reader->GetNumberOfTags(handle), 9);
    unsigned long size = 0;
    EXPECT_TRUE(reader->GetProfile(handle, nullptr, &size));
    ASSERT_GE(size, 128u);
    std::vector<unsigned char> copy(size);
    EXPECT_TRUE(reader->GetProfile(handle, copy.data(), &size));
    EXPECT_EQ(std::string(copy.begin() + 36, copy.begin() + 40), "acsp");

    void* transform = reader->CreateTransform2Profile(handle, handle, INTENT_PERCEPTUAL);
    ASSERT_NE(transform, nullptr);
    EXPECT_TRUE(reader->m_pfnDeleteColorTransform(transform));
    EXPECT_TRUE(reader->Is64BitWindows());

    // The base class reads no tags, so it has no texts.
    CICCColorProfile base(handle, L"base", false);
    std::string text = "kept";
    EXPECT_FALSE(base.GetTextString(handle, 'desc', text));
    EXPECT_EQ(text, "kept");
    EXPECT_TRUE(reader->GetTextString(handle, 'desc', text));
    EXPECT_EQ(text, "Test RGB");
}

TEST(ProfileQueries, NullHandleAnswersWithoutThePlatform) {
    ReaderProbe reader;
    void* none = nullptr;
    unsigned long size = 7;
    EXPECT_EQ(reader.GetNumberOfTags(none), 0);
    EXPECT_FALSE(reader.GetProfile(none, nullptr, &size));
    EXPECT_FALSE(reader.GetProfileHandle(none));
    EXPECT_FALSE(reader.DoesProfileTagExist('desc'));
    EXPECT_EQ(reader.GetRequestedTag('desc', size), nullptr);
    EXPECT_EQ(size, 7u);
    EXPECT_EQ(reader.GetLCSCSType(none), 0);
}
