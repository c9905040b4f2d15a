// EnumColorProfilesW and the matching it shares with EnumColorProfilesA.
#include "profile_enumeration.h"

#include <tesk/big_endian.h>
#include <tesk/path.h>
#include <windows.h>
#include <tesk/export_guard.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>

#include <tesk/device_associations.h>
#include "color_directory.h"
#include "icc_container.h"
#include "installed_profiles.h"

namespace fs = std::filesystem;

namespace tesk::mscms {
namespace {

using Header = std::array<uint8_t, kIccHeaderSize>;

bool ReadHeader(const fs::path& path, Header& header) {
    std::ifstream in(path, std::ios::binary);
    return in.read(reinterpret_cast<char*>(header.data()), header.size()) && BigEndianReader(header).U32(36) == 'acsp';
}

// A selectable field: its ET_ flag, where the record holds the wanted value,
// and where the ICC header holds the profile's.
struct HeaderField {
    DWORD flag;
    size_t recordOffset;
    size_t headerOffset;
};

constexpr HeaderField kHeaderFields[] = {
    {ET_CMMTYPE, offsetof(ENUMTYPEW, dwCMMType), 4},
    {ET_CLASS, offsetof(ENUMTYPEW, dwClass), 12},
    {ET_DATACOLORSPACE, offsetof(ENUMTYPEW, dwDataColorSpace), 16},
    {ET_CONNECTIONSPACE, offsetof(ENUMTYPEW, dwConnectionSpace), 20},
    {ET_SIGNATURE, offsetof(ENUMTYPEW, dwSignature), 36},
    {ET_PLATFORM, offsetof(ENUMTYPEW, dwPlatform), 40},
    {ET_PROFILEFLAGS, offsetof(ENUMTYPEW, dwProfileFlags), 44},
    {ET_MANUFACTURER, offsetof(ENUMTYPEW, dwManufacturer), 48},
    {ET_MODEL, offsetof(ENUMTYPEW, dwModel), 52},
    {ET_ATTRIBUTES, offsetof(ENUMTYPEW, dwAttributes), 56},
    {ET_ATTRIBUTES, offsetof(ENUMTYPEW, dwAttributes) + sizeof(DWORD), 60},
    {ET_RENDERINGINTENT, offsetof(ENUMTYPEW, dwRenderingIntent), 64},
    {ET_CREATOR, offsetof(ENUMTYPEW, dwCreator), 80},
    // The device class is the class of profile a device of that class uses.
    {ET_DEVICECLASS, offsetof(ENUMTYPEW, dwDeviceClass), 12},
};

bool Matches(const ENUMTYPEW& record, const Header& header) {
    const auto* raw = reinterpret_cast<const uint8_t*>(&record);
    return std::all_of(std::begin(kHeaderFields), std::end(kHeaderFields), [&](const HeaderField& field) {
        if (!(record.dwFields & field.flag)) return true;
        DWORD wanted = 0;
        std::memcpy(&wanted, raw + field.recordOffset, sizeof wanted);
        return BigEndianReader(header).U32(field.headerOffset) == wanted;
    });
}

}  // namespace

bool MatchingProfiles(const ENUMTYPEW& record, const std::string& deviceName, std::vector<std::string>& fileNames) {
    // Media type, dithering mode and resolution are printer-driver notions
    // that no profile here records; selecting by them cannot be honoured.
    if (record.dwFields & (ET_MEDIATYPE | ET_DITHERMODE | ET_RESOLUTION)) {
        SetLastError(ERROR_NOT_SUPPORTED);
        return false;
    }
    if ((record.dwFields & ET_DEVICENAME) && deviceName.empty()) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return false;
    }
    const std::string directory = ColorDirectory();
    if (directory.empty()) {
        SetLastError(ERROR_PATH_NOT_FOUND);
        return false;
    }
    std::vector<std::string> associated;
    if (record.dwFields & ET_DEVICENAME) associated = tesk::associations::ProfilesOf(deviceName);
    fileNames.clear();
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(directory, error)) {
        const std::string name = entry.path().filename().string();
        if (!entry.is_regular_file(error) || !IsInstalled(name)) continue;
        if ((record.dwFields & ET_DEVICENAME) && std::find(associated.begin(), associated.end(), name) == associated.end())
            continue;
        Header header{};
        if (ReadHeader(entry.path(), header) && Matches(record, header)) fileNames.push_back(name);
    }
    std::sort(fileNames.begin(), fileNames.end());
    return true;
}

bool UsableEnumRecord(DWORD size, DWORD fields) {
    // Records of version 2 end before the device class.
    const size_t needed = (fields & ET_DEVICECLASS) ? sizeof(ENUMTYPEW) : offsetof(ENUMTYPEW, dwDeviceClass);
    return size >= needed;
}

BOOL CopyListOut(const void* list, size_t bytes, PBYTE buffer, PDWORD size, PDWORD count, DWORD names) {
    if (bytes > UINT32_MAX) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return FALSE;
    }
    if (count) *count = names;
    if (!buffer || *size < bytes) {
        *size = static_cast<DWORD>(bytes);
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return FALSE;
    }
    std::memcpy(buffer, list, bytes);
    *size = static_cast<DWORD>(bytes);
    return TRUE;
}

}  // namespace tesk::mscms

using namespace tesk::mscms;

BOOL WINAPI EnumColorProfilesW(PCWSTR pMachineName, PENUMTYPEW pEnumRecord, PBYTE pEnumerationBuffer,
                               PDWORD pdwSizeOfEnumerationBuffer, PDWORD pnProfiles) try {
    if (!pEnumRecord || !pdwSizeOfEnumerationBuffer || !UsableEnumRecord(pEnumRecord->dwSize, pEnumRecord->dwFields)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    if (!IsLocalMachine(pMachineName)) return FALSE;
    const std::string device =
        (pEnumRecord->dwFields & ET_DEVICENAME) && pEnumRecord->pDeviceName ? tesk::path::Utf8(pEnumRecord->pDeviceName)
                                                                             : std::string();
    std::vector<std::string> names;
    if (!MatchingProfiles(*pEnumRecord, device, names)) return FALSE;
    std::wstring list;
    for (const std::string& name : names) list += tesk::path::Wide(name) + L'\0';
    list += L'\0';
    return CopyListOut(list.data(), list.size() * sizeof(WCHAR), pEnumerationBuffer, pdwSizeOfEnumerationBuffer,
                       pnProfiles, static_cast<DWORD>(names.size()));
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}
