// The association exports; the store itself is shared with GDI.
#include <windows.h>

#include <icm.h>
#include <tesk/device_associations.h>
#include <tesk/path.h>
#include <tesk/export_guard.h>

#include "color_directory.h"
#include "installed_profiles.h"

using namespace tesk::mscms;

namespace {

struct AssociationArguments {
    std::string profile;  // bare file name
    std::string device;
};

bool ReadArguments(PCWSTR machine, PCWSTR profileName, PCWSTR deviceName, AssociationArguments& out) {
    std::wstring profile, device;
    // Missing arguments are reported before the machine, as Windows does.
    if (!TextArgument(profileName, profile) || !TextArgument(deviceName, device) || !IsLocalMachine(machine))
        return false;
    out.profile = FileName(ProfilePath(profile));
    out.device = tesk::path::Utf8(device);
    return !out.profile.empty();
}

}  // namespace

// Appends the profile to the device's list; only installed profiles may be associated.
BOOL WINAPI AssociateColorProfileWithDeviceW(PCWSTR pMachineName, PCWSTR pProfileName, PCWSTR pDeviceName) try {
    AssociationArguments args;
    if (!ReadArguments(pMachineName, pProfileName, pDeviceName, args)) return FALSE;
    if (!IsInstalled(args.profile)) {
        SetLastError(ERROR_PROFILE_NOT_FOUND);
        return FALSE;
    }
    if (!tesk::associations::Add(args.device, args.profile)) {
        SetLastError(ERROR_WRITE_FAULT);
        return FALSE;
    }
    return TRUE;
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}

BOOL WINAPI DisassociateColorProfileFromDeviceW(PCWSTR pMachineName, PCWSTR pProfileName, PCWSTR pDeviceName) try {
    AssociationArguments args;
    if (!ReadArguments(pMachineName, pProfileName, pDeviceName, args)) return FALSE;
    switch (tesk::associations::Remove(args.device, args.profile)) {
        case tesk::associations::RemoveResult::kRemoved: return TRUE;
        case tesk::associations::RemoveResult::kNotAssociated:
            SetLastError(ERROR_PROFILE_NOT_ASSOCIATED_WITH_DEVICE);
            return FALSE;
        case tesk::associations::RemoveResult::kWriteFailed: break;
    }
    SetLastError(ERROR_WRITE_FAULT);
    return FALSE;
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}
