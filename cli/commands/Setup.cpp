// teskcolor setup: the colour-matching dialog, its choices saved as the settings.
#include <windows.h>

#include <cstdio>
#include <string>
#include <tuple>

#include "cli/Commands.h"
#include "cli/Errors.h"
#include "cli/ModuleHost.h"
#include "cli/X11Window.h"
#include "colormgr/ColorManager.h"
#include "host/SettingsStore.h"
#include "host/SingletonManager.h"

namespace teskcolor {

namespace {

std::wstring TextOf(const vell::TSharedArray<wchar_t>& text) { return text.IsNull() ? L"" : text.Get(); }

// The stored settings the manager keeps to itself, as the dialog's start.
struct SStoredChoices {
    int proof = 0;
    int proofIntent = 3;
    CString printerProfile, proofProfile;
};

SStoredChoices ReadStoredChoices() {
    constexpr int kColorGroup = 169;
    SStoredChoices stored;
    auto* store = static_cast<IVSettingsStore*>(CSingletonManager::Instance().GetInstanceVoid(kSettingsStoreGUID));
    if (!store) return stored;
    if (IVError* error = store->Prepare()) error->Release();
    IVSettingsGroup* group = nullptr;
    if (IVError* error = store->OpenGroup(kColorGroup, &group)) error->Release();
    if (!group) return stored;
    group->ReadInt(171, stored.proof);
    group->ReadInt(178, stored.proofIntent);
    group->ReadText(173, stored.printerProfile);
    group->ReadText(174, stored.proofProfile);
    group->Release();
    return stored;
}

vell::TSharedArray<wchar_t> Shared(const CString& text) {
    return text.IsEmpty() ? vell::TSharedArray<wchar_t>() : vell::TSharedArray<wchar_t>::FromText(text.GetString());
}

int Run() {
    RequireDisplay("setup");
    CColorManager& manager = ColourManager();

    const SStoredChoices stored = ReadStoredChoices();
    bool enable = manager.GetMode() == VCM_MODE_PROFILES, proofing = stored.proof != 0;
    CString monitor;
    manager.GetMonitorProfile(monitor);
    vell::TSharedArray<wchar_t> monitorName = Shared(monitor);
    vell::TSharedArray<wchar_t> printerName = Shared(stored.printerProfile), targetName = Shared(stored.proofProfile);
    uint32_t intent = manager.GetLCSIntent(), proofIntent = uint32_t(stored.proofIntent);

    // The dialog's owner: a window of ours, never shown.
    CX11Window owner(1, 1, "teskcolor setup");
    const auto chosen = [&] {
        return std::make_tuple(enable, proofing, TextOf(monitorName), TextOf(printerName), TextOf(targetName),
                               intent, proofIntent);
    };
    const auto before = chosen();
    if (!manager.ColorMatchUI(owner.Handle(), enable, proofing, monitorName, printerName, targetName, intent,
                              proofIntent))
        throw CCliError(EExit::Failed, "the colour-matching dialog could not be shown");
    if (chosen() == before) {  // cancelled, or accepted as it was
        std::printf("nothing changed\n");
        return 0;
    }

    std::wstring monitorText = TextOf(monitorName) == monitor.GetString() ? L"" : TextOf(monitorName);
    std::wstring printerText = TextOf(printerName), targetText = TextOf(targetName);
    manager.UpdateSettings(enable, proofing, monitorText.data(), printerText.data(), targetText.data(), intent,
                           proofIntent);
    std::printf("colour management %s, proofing %s, intent %u, proofing intent %u\n", enable ? "on" : "off",
                proofing ? "on" : "off", intent, proofIntent);
    return 0;
}

}  // namespace

SCommand AddSetupCommand(CLI::App& root) {
    CLI::App* command = AddSubcommand(
        root, "setup", "the colour-matching dialog; its choices become the settings",
        "Opens the colour-matching dialog with the current settings (colour management on or\n"
        "off, proofing, monitor, printer and proof profiles, the two intents) and saves what is\n"
        "accepted as the colour settings; a new monitor profile also becomes the display's.\n"
        "Needs an X display (DISPLAY).\n"
        "reads: the settings. writes: the settings file, and the display's profile if changed.",
        "teskcolor setup");
    return {command, [] { return Run(); }};
}

}  // namespace teskcolor
