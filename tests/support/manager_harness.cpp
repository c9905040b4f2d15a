#include "support/manager_harness.h"

#include <tesk/loader.h>
#include <tesk/path.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <type_traits>

#include "host/SettingsStore.h"
#include "host/SingletonManager.h"

std::vector<bool> CColorManagerTestAccess::BoundInDeclarationOrder(CColorManager& m) {
    return {m.m_pfnGetStandardColorSpaceProfileW != nullptr, m.m_pfnSetupColorMatchingW != nullptr,
            m.m_pfnGetColorDirectoryW != nullptr, m.m_pfnOpenColorProfileW != nullptr,
            m.m_pfnCreateColorTransformW != nullptr, m.m_pfnCreateMultiProfileTransform != nullptr,
            m.m_pfnTranslateBitmapBits != nullptr, m.m_pfnTranslateColors != nullptr,
            m.m_pfnCloseColorProfile != nullptr, m.m_pfnIsColorProfileValid != nullptr,
            m.m_pfnDeleteColorTransform != nullptr, m.m_pfnSetStandardColorSpaceProfileW != nullptr,
            m.m_pfnAssociateColorProfileWithDeviceW != nullptr, m.m_pfnDisassociateColorProfileFromDeviceW != nullptr,
            m.m_pfnInstallColorProfileW != nullptr, m.m_pfnUninstallColorProfileW != nullptr,
            m.m_pfnCreateProfileFromLogColorSpaceW != nullptr, m.m_pfnGetColorProfileFromHandle != nullptr,
            m.m_pfnGetDeviceGammaRamp != nullptr, m.m_pfnSetDeviceGammaRamp != nullptr,
            m.m_pfnEnumICMProfilesW != nullptr};
}

namespace colormgr_test {
namespace {

std::map<void*, std::wstring>& HandleFiles() {
    static std::map<void*, std::wstring> files;
    return files;
}
// File name -> how many more validity calls fail for it (-1: all).
std::map<std::wstring, int>& InvalidProfiles() {
    static std::map<std::wstring, int> names;
    return names;
}

template <typename Function>
Function Real(const wchar_t* module, const char* name) {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(tesk::loader::RealProcAddress(module, name)));
}

std::wstring BaseName(const std::wstring& path) {
    size_t separator = path.find_last_of(L"\\/");
    return separator == std::wstring::npos ? path : path.substr(separator + 1);
}

HPROFILE WINAPI RecordOpen(PPROFILE profile, DWORD access, DWORD share, DWORD creation) {
    RecordedCall call{"OpenColorProfileW", {}, {access, share, creation}, {}, {}};
    std::wstring path;
    if (profile && profile->dwType == PROFILE_FILENAME && profile->pProfileData)
        path = static_cast<const wchar_t*>(profile->pProfileData);
    call.texts.push_back(path);
    if (profile) call.values.push_back(profile->cbDataSize);
    HPROFILE handle = Real<decltype(&OpenColorProfileW)>(L"MSCMS.DLL", "OpenColorProfileW")(profile, access, share,
                                                                                            creation);
    call.handles.push_back(handle);
    if (handle) HandleFiles()[handle] = BaseName(path);
    CallLog().push_back(call);
    return handle;
}

BOOL WINAPI RecordValid(HPROFILE handle, PBOOL valid) {
    CallLog().push_back({"IsColorProfileValid", {FileOfHandle(handle)}, {}, {handle}, {}});
    auto invalid = InvalidProfiles().find(FileOfHandle(handle));
    if (invalid != InvalidProfiles().end() && invalid->second != 0) {
        if (invalid->second > 0) --invalid->second;
        if (valid) *valid = FALSE;
        return FALSE;
    }
    return Real<decltype(&IsColorProfileValid)>(L"MSCMS.DLL", "IsColorProfileValid")(handle, valid);
}

BOOL WINAPI RecordClose(HPROFILE handle) {
    CallLog().push_back({"CloseColorProfile", {FileOfHandle(handle)}, {}, {handle}, {}});
    return Real<decltype(&CloseColorProfile)>(L"MSCMS.DLL", "CloseColorProfile")(handle);
}

HTRANSFORM WINAPI RecordCreate(PHPROFILE profiles, DWORD count, PDWORD intents, DWORD intentCount, DWORD flags,
                               DWORD cmm) {
    RecordedCall call{"CreateMultiProfileTransform", {}, {count, intentCount, flags, cmm}, {}, {}};
    for (DWORD i = 0; i < count; ++i) call.texts.push_back(FileOfHandle(profiles[i]));
    for (DWORD i = 0; i < intentCount; ++i) call.values.push_back(intents[i]);
    HTRANSFORM transform = Real<decltype(&CreateMultiProfileTransform)>(L"MSCMS.DLL", "CreateMultiProfileTransform")(
        profiles, count, intents, intentCount, flags, cmm);
    call.handles.push_back(transform);
    CallLog().push_back(call);
    return transform;
}

BOOL WINAPI RecordDelete(HTRANSFORM transform) {
    CallLog().push_back({"DeleteColorTransform", {}, {}, {transform}, {}});
    return Real<decltype(&DeleteColorTransform)>(L"MSCMS.DLL", "DeleteColorTransform")(transform);
}

BOOL WINAPI RecordSetRamp(HDC dc, LPVOID ramp) {
    RecordedCall call{"SetDeviceGammaRamp", {}, {}, {dc}, {}};
    if (ramp) call.ramp.assign(static_cast<const uint16_t*>(ramp), static_cast<const uint16_t*>(ramp) + 768);
    CallLog().push_back(call);
    return Real<decltype(&SetDeviceGammaRamp)>(L"GDI32.DLL", "SetDeviceGammaRamp")(dc, ramp);
}

template <typename Function>
FARPROC AsProc(Function function) {
    return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(function));
}

// Runs `use` on a group of a fresh store reading the settings file.
template <typename Use>
bool WithStoredGroup(int group, Use use) {
    IVSettingsStore* store = CreateFileSettingsStore();
    IVSettingsGroup* opened = nullptr;
    if (IVError* error = store->Prepare()) error->Release();
    if (IVError* error = store->OpenGroup(group, &opened)) error->Release();
    bool result = opened && use(opened);
    if (opened) opened->Release();
    store->Release();
    return result;
}

template <typename Writer, typename Value>
bool Write(IVSettingsGroup* group, int id, Value value) {
    Writer* writer = nullptr;
    const GUID& iid = std::is_same_v<Writer, IVSettingsIntWriter> ? IID_IVSettingsIntWriter : IID_IVSettingsTextWriter;
    if (group->QueryInterface(iid, reinterpret_cast<void**>(&writer)) != S_OK) return false;
    if (IVError* error = writer->Write(id, value, 0)) error->Release();
    writer->Release();
    return true;
}

}  // namespace

void ManagerTest::SetUp() {
    ::unsetenv("DISPLAY");
    ::unsetenv("TESK_TEST_PRINTERS");
    CallLog().clear();
    HandleFiles().clear();
    InvalidProfiles().clear();
    std::filesystem::create_directories(ColorDir());
    RegisterSettingsStoreService();
}

void ManagerTest::TearDown() {
    CSingletonManager::Instance().DestroyAll();
    tesk::loader::ClearSubstitutes();
    tesk::loader::SetObserver(nullptr);
}

void ManagerTest::InstallPressProfile(const std::string& fileName, const std::string& as) {
    std::filesystem::copy_file(tesk::test::DataPath("ColorProfile/" + fileName),
                               ColorDir() + "/" + (as.empty() ? fileName : as),
                               std::filesystem::copy_options::overwrite_existing);
}

std::vector<uint16_t> TestRamp(size_t entries, uint16_t offset) {
    std::vector<uint16_t> ramp;
    for (size_t channel = 0; channel < 3; ++channel)
        for (size_t i = 0; i < entries; ++i)
            ramp.push_back(static_cast<uint16_t>(std::min<size_t>(65535, offset * (channel + 1) + i * 200)));
    return ramp;
}

HDC GdiCreateDC(const wchar_t* driver, const wchar_t* device) {
    return Real<decltype(&CreateDCW)>(L"GDI32.DLL", "CreateDCW")(driver, device, nullptr, nullptr);
}

void GdiDeleteDC(HDC dc) { Real<decltype(&DeleteDC)>(L"GDI32.DLL", "DeleteDC")(dc); }

std::vector<uint16_t> DisplayRamp() {
    std::vector<uint16_t> ramp(768, 0);
    HDC dc = GdiCreateDC(L"DISPLAY", nullptr);
    EXPECT_TRUE(dc && Real<decltype(&GetDeviceGammaRamp)>(L"GDI32.DLL", "GetDeviceGammaRamp")(dc, ramp.data()));
    GdiDeleteDC(dc);
    return ramp;
}

void SetDisplayRamp(std::vector<uint16_t> ramp) {
    HDC dc = GdiCreateDC(L"DISPLAY", nullptr);
    EXPECT_TRUE(dc && Real<decltype(&SetDeviceGammaRamp)>(L"GDI32.DLL", "SetDeviceGammaRamp")(dc, ramp.data()));
    GdiDeleteDC(dc);
}

int GdiICMMode(HDC dc, int mode) { return Real<decltype(&SetICMMode)>(L"GDI32.DLL", "SetICMMode")(dc, mode); }

std::wstring GdiICMProfile(HDC dc) {
    wchar_t path[1024] = {};
    DWORD size = 1024;
    if (!Real<decltype(&GetICMProfileW)>(L"GDI32.DLL", "GetICMProfileW")(dc, &size, path)) return L"<none>";
    return path;
}

bool StoredInt(int id, int& value) {
    return WithStoredGroup(169, [&](IVSettingsGroup* group) { return group->ReadInt(id, value); });
}

bool StoredText(int id, std::wstring& value) {
    return WithStoredGroup(169, [&](IVSettingsGroup* group) {
        CString text;
        bool ok = group->ReadText(id, text);
        value = text.Str();
        return ok;
    });
}

bool StoredDouble(int id, double& value) {
    return WithStoredGroup(169, [&](IVSettingsGroup* group) { return group->ReadDouble(id, value); });
}

void StoreText(int group, int id, const std::wstring& value) {
    WithStoredGroup(group, [&](IVSettingsGroup* opened) { return Write<IVSettingsTextWriter>(opened, id, value.c_str()); });
}

void StoreInt(int group, int id, int value) {
    WithStoredGroup(group, [&](IVSettingsGroup* opened) { return Write<IVSettingsIntWriter>(opened, id, value); });
}

std::vector<RecordedCall>& CallLog() {
    static std::vector<RecordedCall> log;
    return log;
}

std::vector<RecordedCall> CallsNamed(const std::string& name) {
    std::vector<RecordedCall> calls;
    for (const RecordedCall& call : CallLog())
        if (call.name == name) calls.push_back(call);
    return calls;
}

std::wstring FileOfHandle(void* handle) {
    auto found = HandleFiles().find(handle);
    return found == HandleFiles().end() ? std::wstring() : found->second;
}

void RecordPlatformCalls(const std::vector<std::wstring>& invalidProfiles, int rejections) {
    InvalidProfiles().clear();
    for (const std::wstring& name : invalidProfiles) InvalidProfiles()[name] = rejections;
    tesk::loader::Substitute mscms;
    mscms.overrides["OpenColorProfileW"] = AsProc(&RecordOpen);
    mscms.overrides["IsColorProfileValid"] = AsProc(&RecordValid);
    mscms.overrides["CloseColorProfile"] = AsProc(&RecordClose);
    mscms.overrides["CreateMultiProfileTransform"] = AsProc(&RecordCreate);
    mscms.overrides["DeleteColorTransform"] = AsProc(&RecordDelete);
    tesk::loader::SetSubstitute(L"MSCMS.DLL", mscms);
    tesk::loader::Substitute gdi;
    gdi.overrides["SetDeviceGammaRamp"] = AsProc(&RecordSetRamp);
    tesk::loader::SetSubstitute(L"GDI32.DLL", gdi);
}

}  // namespace colormgr_test
