// teskcolor settings: the colour settings as the module keeps them.
#include <charconv>
#include <cstdio>
#include <map>
#include <nlohmann/json.hpp>

#include "cli/Commands.h"
#include "cli/Errors.h"
#include "cli/ModuleHost.h"
#include "cli/SessionSettings.h"
#include "colormgr/ColorManager.h"
#include "host/SettingsStore.h"
#include "host/SingletonManager.h"

namespace teskcolor {

namespace {

constexpr const char* kKeys =
    "  teskcolor settings [show] [--json]\n"
    "  teskcolor settings set KEY VALUE...\n"
    "Shows or changes the stored colour settings. Keys:\n"
    "  mode             off | profiles | tables   (tables: the gamma tables of 'gamma')\n"
    "  working-space    an RGB profile (file or installed name)\n"
    "  cmyk-profile     a CMYK printer profile (file or installed name)\n"
    "  monitor-profile  the display's profile\n"
    "  intent           perceptual, relative, saturation or absolute (or 0..3)\n"
    "  proof            on | off   (soft-proof the display through the proof profile)\n"
    "  proof-profile    the profile to soft-proof with\n"
    "  proof-intent     as intent\n"
    "  gamma            three numbers, red green blue, for the table mode\n"
    "  embedded         the policy for embedded profiles (an integer)\n";

constexpr int kGroup = 169;

// What the store holds now (the module reads the same ids at start-up).
struct SStored {
    int mode = 1, embedded = 0, proof = 0, intent = 0, proofIntent = 3;
    CString monitor, printer, proofProfile, workingSpace, cmyk;
    double gamma[3] = {0, 0, 0};
};

SStored ReadStore() {
    SStored stored;
    auto* store = static_cast<IVSettingsStore*>(CSingletonManager::Instance().GetInstanceVoid(kSettingsStoreGUID));
    if (!store) return stored;
    if (IVError* error = store->Prepare()) error->Release();
    IVSettingsGroup* group = nullptr;
    if (IVError* error = store->OpenGroup(kGroup, &group)) error->Release();
    if (!group) return stored;
    group->ReadInt(170, stored.mode);
    group->ReadInt(182, stored.embedded);
    group->ReadInt(171, stored.proof);
    group->ReadInt(177, stored.intent);
    group->ReadInt(178, stored.proofIntent);
    group->ReadText(172, stored.monitor);
    group->ReadText(173, stored.printer);
    group->ReadText(174, stored.proofProfile);
    group->ReadText(175, stored.workingSpace);
    group->ReadText(176, stored.cmyk);
    group->ReadDouble(181, stored.gamma[0]);
    group->ReadDouble(180, stored.gamma[1]);
    group->ReadDouble(179, stored.gamma[2]);
    group->Release();
    return stored;
}

const char* ModeName(int mode) { return mode == 0 ? "off" : mode == 2 ? "tables" : "profiles"; }

int Show(CColorManager& manager, bool json) {
    const SStored stored = ReadStore();
    CString working, cmyk, monitor;
    manager.GetDefaultRGBString(working);
    manager.GetCMYKProfile(cmyk);
    manager.GetMonitorProfile(monitor);
    nlohmann::ordered_json out{{"mode", ModeName(manager.GetMode())},
                               {"working-space", working.Utf8()},
                               {"cmyk-profile", cmyk.Utf8()},
                               {"monitor-profile", monitor.Utf8()},
                               {"intent", IntentText(int(manager.GetLCSIntent()))},
                               {"proof", stored.proof != 0},
                               {"proof-profile", stored.proofProfile.Utf8()},
                               {"proof-intent", IntentText(stored.proofIntent)},
                               {"gamma", {stored.gamma[0], stored.gamma[1], stored.gamma[2]}},
                               {"embedded", int(manager.GetEmbeddedMode())},
                               {"settings-file", SettingsFilePath()}};
    if (json) {
        std::printf("%s\n", out.dump(2).c_str());
        return 0;
    }
    for (auto it = out.begin(); it != out.end(); ++it)
        std::printf("%-16s %s\n", it.key().c_str(), it->is_string() ? it->get<std::string>().c_str() : it->dump().c_str());
    return 0;
}

DWORD IntentValue(const std::string& text, const std::string& key) { return DWORD(ParseIntent(text, "settings: " + key)); }

// The embedded-profile policy: a whole number (the module keeps the host's values as given).
VCM_EMBEDDED EmbeddedValue(const std::string& text) {
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || error != std::errc() || end != text.data() + text.size() || value < 0)
        throw CCliError(EExit::Usage, "settings: embedded is a whole number from 0, not '" + text + "'");
    return VCM_EMBEDDED(value);
}

// The module joins these names to the colour directory: a profile from
// elsewhere is installed there first.
CString CheckedProfile(const std::string& argument, uint32_t space, const std::string& role, CColorManager& manager) {
    const SProfileSource& profile = ResolveProfile(argument, &manager);
    RequireAcceptedProfile(profile);
    RequireColourSpace(profile, space, role);
    return CString(NameInColourDirectory(profile, manager, true));
}

int Set(CColorManager& manager, const std::vector<std::string>& words) {
    if (words.size() < 2) throw CCliError(EExit::Usage, "usage: teskcolor settings set KEY VALUE...");
    const std::string& key = words[0];
    const std::string& value = words[1];
    CSettingsChange change;
    SStored stored = ReadStore();
    bool useProfiles = manager.GetMode() == VCM_MODE_PROFILES;
    bool proof = stored.proof != 0;
    DWORD intent = manager.GetLCSIntent();
    DWORD proofIntent = DWORD(stored.proofIntent);
    CString proofProfile;  // empty: left as it is
    bool commit = true;
    const auto update = [&] {
        CString empty;
        std::wstring proofName = proofProfile.Str();
        manager.UpdateSettings(useProfiles, proof, empty.GetBuffer(1), empty.GetBuffer(1), proofName.data(), intent,
                               proofIntent);
    };
    // The module writes every value at once: only those that differ from
    // this restatement are the user's change.
    change.Baseline(update);

    if (key == "mode") {
        if (value != "off" && value != "profiles" && value != "tables")
            throw CCliError(EExit::Usage, "settings: mode is off, profiles or tables");
        useProfiles = value == "profiles";
        // Without profiles the module picks its mode from the gammas: all 1.0 means off.
        if (value == "off") manager.UpdateSettings(1.0, 1.0, 1.0);
        if (value == "tables" && stored.gamma[0] == 1.0 && stored.gamma[1] == 1.0 && stored.gamma[2] == 1.0)
            throw CCliError(EExit::Usage, "settings: set gamma first (three values not all 1.0) for the table mode");
    } else if (key == "working-space") {
        CString name = CheckedProfile(value, 0x52474220, "working space", manager);
        manager.SetColorWorkingSpace(name);
        manager.UpdateWithColorWS();
        commit = false;
    } else if (key == "cmyk-profile") {
        // The CMYK profile may be a path or a name beside the program as well.
        const SProfileSource& profile = ResolveProfile(value, &manager);
        RequireColourSpace(profile, 0x434D594B, "CMYK profile");
        CString name(profile.moduleName);
        manager.SetCMYKProfile(name);
        commit = false;
    } else if (key == "monitor-profile") {
        CString name = CheckedProfile(value, 0x52474220, "monitor profile", manager);
        manager.SetMonitorProfile(name);
        commit = false;
    } else if (key == "intent") {
        intent = IntentValue(value, key);
    } else if (key == "proof-intent") {
        proofIntent = IntentValue(value, key);
    } else if (key == "proof") {
        if (value != "on" && value != "off") throw CCliError(EExit::Usage, "settings: proof is on or off");
        proof = value == "on";
    } else if (key == "proof-profile") {
        proofProfile = CString(NameInColourDirectory(ResolveProfile(value, &manager), manager, true));
    } else if (key == "gamma") {
        if (words.size() != 4) throw CCliError(EExit::Usage, "settings: gamma takes three numbers");
        double g[3];
        for (int i = 0; i < 3; ++i) {
            char* end = nullptr;
            g[i] = std::strtod(words[size_t(i) + 1].c_str(), &end);
            if (*end || !(g[i] > 0.0 && g[i] <= 10.0)) throw CCliError(EExit::Usage, "settings: a gamma is above 0, at most 10");
        }
        manager.UpdateSettings(g[0], g[1], g[2]);
        commit = false;
    } else if (key == "embedded") {
        manager.SetEmbeddedMode(EmbeddedValue(value));
        commit = false;
    } else {
        throw CCliError(EExit::Usage, "settings: unknown key '" + key + "' (see settings --help)");
    }
    if (commit) update();
    change.Commit();
    std::printf("%s set\n", key.c_str());
    return 0;
}

}  // namespace

namespace {

struct SSettingsOptions {
    bool json = false;
    std::vector<std::string> words;
};

int Run(const SSettingsOptions& options) {
    const auto& words = options.words;
    CColorManager& manager = ColourManager();
    if (words.empty() || words[0] == "show") return Show(manager, options.json);
    if (words[0] == "set") return Set(manager, std::vector<std::string>(words.begin() + 1, words.end()));
    throw CCliError(EExit::Usage, "settings: 'show' or 'set' (see teskcolor help settings)");
}

}  // namespace

SCommand AddSettingsCommand(CLI::App& root) {
    auto options = std::make_shared<SSettingsOptions>();
    CLI::App* command = AddSubcommand(root, "settings", "show or change the colour settings",
                                      std::string(kKeys) +
                                          "reads: the settings file. writes: 'set' changes the settings file.",
                                      "teskcolor settings set intent perceptual");
    command->add_flag("--json", options->json, "one JSON object on standard output, for scripts");
    command->add_option("ACTION", options->words, "show | set KEY VALUE...");
    return {command, [options] { return Run(*options); }};
}

}  // namespace teskcolor
