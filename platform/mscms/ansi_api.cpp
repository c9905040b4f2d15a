// The ANSI forms of the text-taking functions. Narrow text is UTF-8 and is
// carried to and from the wide forms; sizes of narrow text count bytes.
#include <windows.h>

#include <icm.h>
#include <tesk/path.h>
#include <tesk/export_guard.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "color_directory.h"
#include "profile_enumeration.h"

using namespace tesk::mscms;

namespace {

// A narrow argument as wide text; null stays null.
class WideArgument {
public:
    explicit WideArgument(PCSTR text) {
        if (text) text_ = tesk::path::Wide(text);
    }
    PCWSTR get() const { return text_ ? text_->c_str() : nullptr; }

private:
    std::optional<std::wstring> text_;
};

// Runs a wide call that fills a text buffer, asking it first for the size.
bool AskWide(const std::function<BOOL(PWSTR, PDWORD)>& call, std::wstring& text) {
    DWORD bytes = 0;
    if (call(nullptr, &bytes) || GetLastError() != ERROR_INSUFFICIENT_BUFFER) return false;
    std::vector<WCHAR> buffer(bytes / sizeof(WCHAR) + 1, L'\0');
    if (!call(buffer.data(), &bytes)) return false;
    text = buffer.data();
    return true;
}

BOOL CopyNarrowOut(const std::wstring& text, PSTR buffer, PDWORD byteSize) {
    const std::string narrow = tesk::path::Utf8(text);
    const DWORD needed = static_cast<DWORD>(narrow.size() + 1);
    if (!buffer || *byteSize < needed) {
        *byteSize = needed;
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return FALSE;
    }
    std::memcpy(buffer, narrow.c_str(), needed);
    *byteSize = needed;
    return TRUE;
}

BOOL NarrowTextCall(PDWORD byteSize, PSTR buffer, const std::function<BOOL(PWSTR, PDWORD)>& call) {
    if (!byteSize) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    std::wstring text;
    if (!AskWide(call, text)) return FALSE;
    return CopyNarrowOut(text, buffer, byteSize);
}

}  // namespace

HPROFILE WINAPI OpenColorProfileA(PPROFILE pProfile, DWORD dwDesiredAccess, DWORD dwShareMode,
                                  DWORD dwCreationMode) try {
    if (!pProfile || pProfile->dwType != PROFILE_FILENAME || !pProfile->pProfileData)
        return OpenColorProfileW(pProfile, dwDesiredAccess, dwShareMode, dwCreationMode);
    // The name ends at its terminator, never past cbDataSize bytes.
    const auto* name = static_cast<const char*>(pProfile->pProfileData);
    const std::wstring wide = tesk::path::Wide(std::string(name, strnlen(name, pProfile->cbDataSize)));
    PROFILE record{PROFILE_FILENAME, const_cast<WCHAR*>(wide.c_str()),
                   static_cast<DWORD>(sizeof(WCHAR) * (wide.size() + 1))};
    return OpenColorProfileW(&record, dwDesiredAccess, dwShareMode, dwCreationMode);
} catch (...) {
    return tesk::FailAtBoundary(HPROFILE{});
}

BOOL WINAPI GetColorDirectoryA(PCSTR pMachineName, PSTR pBuffer, PDWORD pdwSize) try {
    const WideArgument machine(pMachineName);
    return NarrowTextCall(pdwSize, pBuffer,
                          [&](PWSTR buffer, PDWORD size) { return GetColorDirectoryW(machine.get(), buffer, size); });
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}

BOOL WINAPI GetStandardColorSpaceProfileA(PCSTR pMachineName, DWORD dwProfileID, PSTR pProfileName,
                                          PDWORD pdwSize) try {
    const WideArgument machine(pMachineName);
    return NarrowTextCall(pdwSize, pProfileName, [&](PWSTR buffer, PDWORD size) {
        return GetStandardColorSpaceProfileW(machine.get(), dwProfileID, buffer, size);
    });
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}

BOOL WINAPI SetStandardColorSpaceProfileA(PCSTR pMachineName, DWORD dwProfileID, PCSTR pProfileName) try {
    return SetStandardColorSpaceProfileW(WideArgument(pMachineName).get(), dwProfileID,
                                         WideArgument(pProfileName).get());
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}

BOOL WINAPI InstallColorProfileA(PCSTR pMachineName, PCSTR pProfileName) try {
    return InstallColorProfileW(WideArgument(pMachineName).get(), WideArgument(pProfileName).get());
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}

BOOL WINAPI UninstallColorProfileA(PCSTR pMachineName, PCSTR pProfileName, BOOL bDelete) try {
    return UninstallColorProfileW(WideArgument(pMachineName).get(), WideArgument(pProfileName).get(), bDelete);
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}

BOOL WINAPI AssociateColorProfileWithDeviceA(PCSTR pMachineName, PCSTR pProfileName, PCSTR pDeviceName) try {
    return AssociateColorProfileWithDeviceW(WideArgument(pMachineName).get(), WideArgument(pProfileName).get(),
                                            WideArgument(pDeviceName).get());
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}

BOOL WINAPI DisassociateColorProfileFromDeviceA(PCSTR pMachineName, PCSTR pProfileName, PCSTR pDeviceName) try {
    return DisassociateColorProfileFromDeviceW(WideArgument(pMachineName).get(), WideArgument(pProfileName).get(),
                                               WideArgument(pDeviceName).get());
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}

BOOL WINAPI EnumColorProfilesA(PCSTR pMachineName, PENUMTYPEA pEnumRecord, PBYTE pEnumerationBuffer,
                               PDWORD pdwSizeOfEnumerationBuffer, PDWORD pnProfiles) try {
    if (!pEnumRecord || !pdwSizeOfEnumerationBuffer || !UsableEnumRecord(pEnumRecord->dwSize, pEnumRecord->dwFields)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    if (!IsLocalMachine(WideArgument(pMachineName).get())) return FALSE;
    // The two records differ only in the device name's type.
    static_assert(sizeof(ENUMTYPEA) == sizeof(ENUMTYPEW));
    ENUMTYPEW record{};
    std::memcpy(&record, pEnumRecord, std::min<size_t>(pEnumRecord->dwSize, sizeof record));
    record.pDeviceName = nullptr;
    const std::string device =
        (pEnumRecord->dwFields & ET_DEVICENAME) && pEnumRecord->pDeviceName ? pEnumRecord->pDeviceName : "";
    std::vector<std::string> names;
    if (!MatchingProfiles(record, device, names)) return FALSE;
    std::string list;
    for (const std::string& name : names) list += name + '\0';
    list += '\0';
    return CopyListOut(list.data(), list.size(), pEnumerationBuffer, pdwSizeOfEnumerationBuffer, pnProfiles,
                       static_cast<DWORD>(names.size()));
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}
