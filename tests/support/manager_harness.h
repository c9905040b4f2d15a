// Shared pieces of the colour-manager tests: an isolated fixture with a
// settings store, access to the manager's private state, profiles made with
// lcms2, and a log of the platform calls that recording substitutes saw.
#pragma once
#include <windows.h>
#include <icm.h>

#include <map>
#include <string>
#include <vector>

#include "colormgr/ColorManager.h"
#include "host/SettingsStore.h"
#include "support/lcms_profiles.h"
#include "support/temp_env.h"

class CColorManagerTestAccess {
public:
    static bool UpdateTransform(CColorManager& m) { return m.UpdateTransform(); }
    static bool GetDisplayMonitorInfo(CColorManager& m) { return m.GetDisplayMonitorInfo(); }
    static HTRANSFORM ImageTransform(CColorManager& m) { return m.m_hImageTransform; }
    static HTRANSFORM& CMYKToRGB(CColorManager& m) { return m.m_hCMYKToRGBTransform; }
    static HTRANSFORM& RGBToCMYK(CColorManager& m) { return m.m_hRGBToCMYKTransform; }
    static std::wstring Text(const vell::TSharedArray<wchar_t>& s) { return s.IsNull() ? L"<null>" : s.Get(); }
    static std::wstring MonitorProfile(CColorManager& m) { return Text(m.m_strMonitorProfile); }
    static std::wstring WorkingSpace(CColorManager& m) { return Text(m.m_strWorkingSpace); }
    static std::wstring CMYKProfile(CColorManager& m) { return Text(m.m_strCMYKProfile); }
    static std::wstring PrinterProfile(CColorManager& m) { return Text(m.m_strPrinterProfile); }
    static std::wstring ProofProfile(CColorManager& m) { return Text(m.m_strProofProfile); }
    static std::wstring PrinterName(CColorManager& m) { return Text(m.m_strPrinterName); }
    static std::wstring MonitorID(CColorManager& m) { return Text(m.m_strMonitorID); }
    static std::wstring AdapterName(CColorManager& m) { return Text(m.m_strAdapterName); }
    static void ClearWorkingSpace(CColorManager& m) { m.m_strWorkingSpace.Reset(); }
    static bool Proof(CColorManager& m) { return m.m_bProof; }
    static DWORD Intent(CColorManager& m) { return m.m_dwIntent; }
    static DWORD ProofIntent(CColorManager& m) { return m.m_dwProofIntent; }
    static double Gamma(CColorManager& m, int i) { return i == 0 ? m.m_dGamma0 : i == 1 ? m.m_dGamma1 : m.m_dGamma2; }
    static const uint8_t* GammaTable(CColorManager& m, int i) {
        return i == 0 ? m.m_abGammaTable0 : i == 1 ? m.m_abGammaTable1 : m.m_abGammaTable2;
    }
    static const uint16_t* SavedRamp(CColorManager& m) { return m.m_pSavedGammaRamp; }
    static const SColorSpecRGB& ColorSpec(CColorManager& m) { return m.m_colorSpec; }
    static std::vector<bool> BoundInDeclarationOrder(CColorManager& m);
    static std::wstring DefaultPrinterName(CColorManager& m) { return Text(m.GetDefaultPrinterName()); }
};

namespace colormgr_test {

// Every test: its own folders, no X display, no printers, a file-backed
// settings store, and no manager or substitute left behind.
class ManagerTest : public tesk::test::IsolatedTest {
protected:
    void SetUp() override;
    void TearDown() override;
    // The colour directory of this test (Linux path).
    std::string ColorDir() const { return env_.ColorDir(); }
    // Copies one of the project's CMYK press profiles into the colour directory.
    void InstallPressProfile(const std::string& fileName, const std::string& as = "");
};

using tesk::test::WriteRgbProfile;
// A strictly increasing, non-identity ramp of `entries` values per channel.
std::vector<uint16_t> TestRamp(size_t entries, uint16_t offset);
// The virtual display's gamma ramp.
std::vector<uint16_t> DisplayRamp();
void SetDisplayRamp(std::vector<uint16_t> ramp);
// GDI32 calls made by the test itself (through the real module).
HDC GdiCreateDC(const wchar_t* driver, const wchar_t* device);
void GdiDeleteDC(HDC dc);
int GdiICMMode(HDC dc, int mode);
std::wstring GdiICMProfile(HDC dc);
// Values of group 169 as a fresh store reads them from the settings file.
bool StoredInt(int id, int& value);
bool StoredText(int id, std::wstring& value);
bool StoredDouble(int id, double& value);
void StoreText(int group, int id, const std::wstring& value);
void StoreInt(int group, int id, int value);

// Platform calls seen by recording substitutes, in order.
struct RecordedCall {
    std::string name;
    std::vector<std::wstring> texts;  // file names and device strings
    std::vector<DWORD> values;        // intents, counts, flags
    std::vector<void*> handles;
    std::vector<uint16_t> ramp;
};
std::vector<RecordedCall>& CallLog();
std::vector<RecordedCall> CallsNamed(const std::string& name);
// The file an open profile handle was opened from ("" when unknown).
std::wstring FileOfHandle(void* handle);

// Stands recording substitutes in for MSCMS.DLL (profile open, validity,
// transforms) and GDI32.DLL (setting gamma ramps); `invalidProfiles` makes
// IsColorProfileValid's call fail for those files (`rejections` times, or always).
void RecordPlatformCalls(const std::vector<std::wstring>& invalidProfiles = {}, int rejections = -1);

}  // namespace colormgr_test
