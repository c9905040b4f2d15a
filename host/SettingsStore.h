// The host's settings store service: values addressed by (group, id), each an
// integer, a text or a double. The singleton manager hands it out under
// kSettingsStoreGUID. The file-backed store keeps
// $XDG_CONFIG_HOME/teskcolor/settings.json: every write is merged under a file
// lock with what other processes wrote and the file is replaced atomically.
#pragma once
#include <windows.h>

#include <string>
#include <variant>

#include "CString.h"
#include "Unknown.h"
#include "host/HostExport.h"

constexpr GUID kSettingsStoreGUID = {0x889F1FE9, 0x5EEB, 0x4353, {0xA5, 0x30, 0x3C, 0x53, 0x6B, 0x26, 0xFE, 0x98}};
constexpr GUID IID_IVSettingsIntWriter = {0xC93879F9, 0x19B5, 0x4465, {0x93, 0xCA, 0x8D, 0xA0, 0x1C, 0x90, 0x5C, 0xEA}};
constexpr GUID IID_IVSettingsTextWriter = {0xA758F827, 0x12C5, 0x4436, {0x81, 0x5F, 0x39, 0x0C, 0xCA, 0x91, 0x1D, 0xB0}};
constexpr GUID IID_IVSettingsGroup = {0x5B7D3C2E, 0x8E61, 0x4F0A, {0x9C, 0x55, 0x21, 0x7A, 0x40, 0x6B, 0xD3, 0x11}};
constexpr GUID IID_IVSettingsStore = {0x0E4C6A7D, 0x2B19, 0x4C83, {0xB1, 0x6E, 0x93, 0x5F, 0x02, 0xA8, 0x7C, 0x44}};
constexpr GUID IID_IVSettingsMerge = {0x7D21A0C4, 0x3F5E, 0x4B8A, {0x9E, 0x12, 0x6C, 0x0B, 0x57, 0xE4, 0x28, 0x91}};

struct IVSettingsIntWriter : IVUnknown {
    // Null on success, else an error object the caller releases.
    virtual IVError* Write(int id, int value, int flags) = 0;
};

struct IVSettingsTextWriter : IVUnknown {
    virtual IVError* Write(int id, const wchar_t* value, int flags) = 0;
};

// One group of settings. QueryInterface gives the two writers.
struct IVSettingsGroup : IVUnknown {
    virtual bool ReadInt(int id, int& value) = 0;
    virtual bool ReadText(int id, CString& value) = 0;
    virtual bool ReadDouble(int id, double& value) = 0;
    virtual IVError* WriteDouble(int id, double value, int flags) = 0;
};

struct IVSettingsStore : IVUnknown {
    // Readies the store for a sequence of calls (re-reads the file).
    virtual IVError* Prepare() = 0;
    virtual IVError* OpenGroup(int group, IVSettingsGroup** out) = 0;
};

struct SSettingsEntry {
    int group = 0, id = 0;
    std::variant<int, std::wstring, double> value;
};

// Several values written as one change, so that no reader ever sees some of
// them without the others. The file-backed store gives it through QueryInterface.
struct IVSettingsMerge : IVUnknown {
    virtual IVError* WriteTogether(const SSettingsEntry* entries, size_t count) = 0;
};

// A new file-backed store (reference count 1).
TESK_HOST_API IVSettingsStore* CreateFileSettingsStore();
// Registers a file-backed store with the singleton manager unless one is
// registered already; returns the registered store (not add-ref'ed).
TESK_HOST_API IVSettingsStore* RegisterSettingsStoreService();
// Full path of the settings file.
TESK_HOST_API std::string SettingsFilePath();
