// One pass over a group of the host's settings store: finds the store through
// the singleton manager, prepares it, opens the group, and releases both when
// the pass ends. A missing store or group makes every call a no-op.
#pragma once
#include "host/SettingsStore.h"

namespace colormgr {

inline constexpr int kColorSettingsGroup = 169;
inline constexpr int kPrinterSettingsGroup = 0;
inline constexpr int kDefaultPrinterId = 7;

enum ColorSettingId : int {
    kSettingMode = 170,
    kSettingProof = 171,
    kSettingMonitorProfile = 172,
    kSettingPrinterProfile = 173,
    kSettingProofProfile = 174,
    kSettingWorkingSpace = 175,
    kSettingCMYKProfile = 176,
    kSettingIntent = 177,
    kSettingProofIntent = 178,
    kSettingGamma2 = 179,
    kSettingGamma1 = 180,
    kSettingGamma0 = 181,
    kSettingEmbedded = 182,
};

class CSettingsGroupAccess {
public:
    explicit CSettingsGroupAccess(int group);
    ~CSettingsGroupAccess();
    CSettingsGroupAccess(const CSettingsGroupAccess&) = delete;
    CSettingsGroupAccess& operator=(const CSettingsGroupAccess&) = delete;

    bool HasStore() const { return m_pStore != nullptr; }
    bool IsOpen() const { return m_pGroup != nullptr; }

    void WriteInt(int id, int value);
    void WriteText(int id, const wchar_t* value);
    void WriteDouble(int id, double value);

    bool ReadInt(int id, int& value);
    bool ReadText(int id, CString& value);
    bool ReadDouble(int id, double& value);

private:
    IVSettingsStore* m_pStore = nullptr;
    IVSettingsGroup* m_pGroup = nullptr;
};

}  // namespace colormgr
