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
    void SetUp() override { fs::create_directories(env_.ColorDir()); }

    std::string Install(const std::string& folder, const std::string& name, const Bytes& bytes) {
        fs::create_directories(folder);
        std::string path = folder + "/" + name;
        tesk::test::WriteBytes(path, bytes);
        return path;
    }

    static std::wstring Windows(const std::string& path) { return tesk::path::ToWindows(path); }
};

std::vector<std::wstring> g_closed;
BOOL WINAPI RecordingClose(HPROFILE profile) {
    g_closed.push_back(L"close");
    auto real = reinterpret_cast<BOOL(WINAPI*)(HPROFILE)>(
        reinterpret_cast<void (*)()>(tesk::loader::RealProcAddress(L"MSCMS.DLL", "CloseColorProfile")));
    return real(profile);
}

}  // namespace

TEST_F(ProfileHandle, BareNameOpensFromTheColourDirectory) {
    Install(env_.ColorDir(), "Test Display.icm", MatrixDisplay().Build());
    ReaderProbe reader;
    std::wstring name = L"Test Display.icm";
    void* handle = reader.OpenICCProfile(name.data());
    ASSERT_NE(handle, nullptr);
    // Opening does not adopt.
    EXPECT_EQ(reader.GetProfile(), nullptr);
    EXPECT_TRUE(reader.CloseProfile(handle));
    EXPECT_EQ(handle, nullptr);

    std::wstring missing = L"Not There.icm";
    EXPECT_EQ(reader.OpenICCProfile(missing.data()), nullptr);
    EXPECT_EQ(reader.OpenICCProfile(nullptr), nullptr);
}

TEST_F(ProfileHandle, NameWithBackslashOrColonIsUsedAsItStands) {
    std::string path = Install(env_.Root() + "/elsewhere", "Away.icc", MatrixDisplay().Build());
    ReaderProbe reader;
    std::wstring withBackslash = Windows(path);
    void* handle = reader.OpenICCProfile(withBackslash.data());
    ASSERT_NE(handle, nullptr);
    reader.CloseProfile(handle);

    std::wstring withDrive = L"Z:" + Windows(path);
    handle = reader.OpenICCProfile(withDrive.data());
    ASSERT_NE(handle, nullptr);
    reader.CloseProfile(handle);

    // Without a separator the same name is looked for in the colour directory.
    std::wstring bare = L"Away.icc";
    EXPECT_EQ(reader.OpenICCProfile(bare.data()), nullptr);
}

TEST_F(ProfileHandle, OwnProfilesAreLookedForBesideTheExecutable) {
    ReaderProbe reader;
    CString swop;
    ASSERT_TRUE(swop.LoadString(10403));
    CString fogra;
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

    std::wstring name = swop.Str();
    void* handle = reader.OpenICCProfile(name.data());
    ASSERT_NE(handle, nullptr) << "bin/ColorProfile must hold the module's own profiles";
    reader.SetProfile(handle, name.data());
    PROFILEHEADER header;
    ASSERT_TRUE(HeaderOf(reader, header));
    EXPECT_EQ(header.phDataColorSpace, DWORD('CMYK'));
}

TEST_F(ProfileHandle, OtherNamesUseThePlatformColourDirectory) {
    ReaderProbe reader;
    CString directory;
    reader.GetColorDirectoryW(directory, CString(L"anything.icc"));
    EXPECT_EQ(directory, CString(Windows(env_.ColorDir())));
}

TEST_F(ProfileHandle, AnInvalidProfileIsClosedAndNotReturned) {
    ProfileBuilder broken = MatrixDisplay();
    broken.Remove('wtpt');
    Install(env_.ColorDir(), "Broken.icm", broken.Build());

    tesk::loader::Substitute recording;
    recording.overrides["CloseColorProfile"] = reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(&RecordingClose));
    tesk::loader::SetSubstitute(L"MSCMS.DLL", recording);
    ReaderProbe reader;
    tesk::loader::ClearSubstitutes();
    g_closed.clear();
    std::wstring name = L"Broken.icm";
    EXPECT_EQ(reader.OpenICCProfile(name.data()), nullptr);
    EXPECT_EQ(g_closed.size(), 1u);
}

TEST_F(ProfileHandle, SetProfileAdoptsClosingTheOldAndIgnoresNull) {
    Install(env_.ColorDir(), "A.icm", MatrixDisplay().Build());
    ReaderProbe reader;
    std::wstring name = L"A.icm";
    void* first = reader.OpenICCProfile(name.data());
    reader.SetProfile(first, name.data());
    void* none = nullptr;
    std::wstring other = L"other";
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
    Install(env_.ColorDir(), "A.icm", MatrixDisplay().Build());
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
    Install(env_.ColorDir(), "A.icm", MatrixDisplay().Build());
    ReaderProbe opener;
    std::wstring name = L"A.icm";
    void* handle = opener.OpenICCProfile(name.data());
    { CICCReadColorProfile borrowing(handle, L"A.icm", false); }
    EXPECT_TRUE(IsOpen(opener, handle));
    { CICCColorProfile owning(handle, nullptr, true); }
    EXPECT_FALSE(IsOpen(opener, handle));
}

TEST_F(ProfileHandle, CopySharesTheHandleAndRebindsWithoutProfileBytes) {
    Bytes bytes = MatrixDisplay().Build();
    auto original = ReaderOf(bytes);
    ASSERT_NE(original->GetProfile(), nullptr);
    original->m_bOwnsHandle = FALSE;
    ReaderProbe copy(*original);
    EXPECT_EQ(copy.GetProfile(), original->GetProfile());
    EXPECT_EQ(copy.m_bOwnsHandle, TRUE);
    EXPECT_NE(original->m_pfnGetColorProfileFromHandle, nullptr);
    EXPECT_EQ(copy.m_pfnGetColorProfileFromHandle, nullptr);
    EXPECT_NE(copy.m_pfnGetColorProfileElement, nullptr);
    // The copy still reads the shared profile.
    CString text;
    EXPECT_TRUE(copy.GetDescription(text));
    EXPECT_EQ(text, L"Test RGB");
}

TEST_F(ProfileHandle, AssignmentCopiesEveryMember) {
    Bytes bytes = MatrixDisplay().Build();
    auto source = ReaderOf(bytes);
    source->m_bOwnsHandle = FALSE;
    void* none = nullptr;
    ReaderProbe target(none, L"before", true);
    target = *source;
    EXPECT_EQ(target.GetProfile(), source->GetProfile());
    EXPECT_EQ(target.m_strProfileName, source->m_strProfileName);
    EXPECT_EQ(target.m_bOwnsHandle, FALSE);
    EXPECT_EQ(target.m_pfnGetColorProfileFromHandle, source->m_pfnGetColorProfileFromHandle);
    EXPECT_EQ(target.m_pfnSetColorProfileElementSize, source->m_pfnSetColorProfileElementSize);
}

TEST(ProfileBinding, AMissingExportStopsTheChain) {
    tesk::loader::Substitute noDirectory;
    noDirectory.hidden = {"GetColorDirectoryW"};
    tesk::loader::SetSubstitute(L"MSCMS.DLL", noDirectory);
    ReaderProbe reader;
    EXPECT_NE(reader.m_pfnGetColorProfileHeader, nullptr);
    EXPECT_EQ(reader.m_pfnGetColorDirectoryW, nullptr);
    EXPECT_EQ(reader.m_pfnOpenColorProfileW, nullptr);
    EXPECT_EQ(reader.m_pfnGetColorProfileFromHandle, nullptr);
    EXPECT_EQ(reader.m_pfnCreateMultiProfileTransform, nullptr);
    // The reader's own names are a chain of their own.
    EXPECT_NE(reader.m_pfnGetColorProfileElement, nullptr);

    tesk::loader::Substitute noProfileBytes;
    noProfileBytes.hidden = {"GetColorProfileFromHandle", "CreateMultiProfileTransform", "GetColorProfileElement"};
    tesk::loader::SetSubstitute(L"MSCMS.DLL", noProfileBytes);
    ReaderProbe partial;
    EXPECT_NE(partial.m_pfnOpenColorProfileW, nullptr);
    EXPECT_EQ(partial.m_pfnGetColorProfileFromHandle, nullptr);
    EXPECT_EQ(partial.m_pfnCreateMultiProfileTransform, nullptr);
    EXPECT_EQ(partial.m_pfnDeleteColorTransform, nullptr);
    EXPECT_EQ(partial.m_pfnGetColorProfileElement, nullptr);
    EXPECT_EQ(partial.m_pfnCreateProfileFromLogColorSpaceW, nullptr);
    EXPECT_EQ(partial.m_pfnSetColorProfileElement, nullptr);
    tesk::loader::ClearSubstitutes();
}

TEST(ProfileBinding, WithoutTheDialogModuleNothingIsBound) {
    tesk::loader::Substitute missing;
    missing.missing = true;
    tesk::loader::SetSubstitute(L"ICMUI.DLL", missing);
    ReaderProbe reader;
    tesk::loader::ClearSubstitutes();
    EXPECT_EQ(reader.m_pfnGetColorProfileHeader, nullptr);
    EXPECT_EQ(reader.m_pfnCloseColorProfile, nullptr);
    EXPECT_EQ(reader.m_pfnGetColorProfileElement, nullptr);
    // Nothing bound: every query is a plain failure, not a crash.
    std::wstring name = L"x.icc";
    EXPECT_EQ(reader.OpenICCProfile(name.data()), nullptr);
    Bytes bytes = MatrixDisplay().Build();
    bool valid = false;
    EXPECT_FALSE(reader.CreateFromRawData(bytes.data(), static_cast<unsigned long>(bytes.size()), valid));
}

TEST(ProfileQueries, ProfileBytesTagCountAndTransforms) {
    Bytes bytes = MatrixDisplay().Build();
    auto reader = ReaderOf(bytes);
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

TEST(ProfileQueries, BaseClassHasNoTagsSoNoTexts) {
    Bytes bytes = MatrixDisplay().Build();
    auto reader = ReaderOf(bytes);
    void* handle = reader->GetProfile();
    CICCColorProfile base(handle, L"base", false);
    std::string text = "kept";
    EXPECT_FALSE(base.GetTextString(handle, 'desc', text));
    EXPECT_EQ(text, "kept");
    EXPECT_TRUE(reader->GetTextString(handle, 'desc', text));
    EXPECT_EQ(text, "Test RGB");
}
