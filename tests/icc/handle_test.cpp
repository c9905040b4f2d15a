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
    EXPECT_EQ(reader.IsCustomColorProfile(fogra), 1);
    EXPECT_EQ(reader.IsCustomColorProfile(CString(L"swop coated (tr003).icc")), 0);

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
