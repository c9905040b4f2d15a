// The settings store the command line registers with the host's singleton
// manager. It reads and writes the user's settings file, except for the
// overrides of one run (`--cmyk PROFILE`, a proof profile for `proof`): once
// a command calls KeepWritesForThisRun(), the module's setters change values
// that only this process sees, and the user's saved settings stay as they were.
#pragma once
#include <optional>

namespace teskcolor {

// Registers the store unless one is registered already. Call before the
// colour manager is first created, since it reads its settings then.
void RegisterSessionSettingsStore();
// From now on, writes stay in memory for this process.
void KeepWritesForThisRun();
// A value this process reads instead of the stored one (writes then stay in
// memory too). Set before the colour manager starts, it starts with it.
void SetForThisRun(int group, int id, int value);
// What the store holds (with this run's values), nothing when unset.
std::optional<int> StoredInt(int group, int id);

// One change of the user's settings, however many values the module writes
// for it: the writes are held until Commit, which applies to the settings
// file, in one replacement under its lock, only the values this process
// changed. A value another process changed meanwhile is kept.
class CSettingsChange {
public:
    CSettingsChange();
    // Without a commit the held writes are dropped.
    ~CSettingsChange();
    CSettingsChange(const CSettingsChange&) = delete;
    CSettingsChange& operator=(const CSettingsChange&) = delete;

    // Writes made by `restate` are the module restating values it holds:
    // they are what a later write is compared with, and no change themselves.
    template <typename Restate>
    void Baseline(Restate restate) {
        SetRecordingBaseline(true);
        restate();
        SetRecordingBaseline(false);
    }
    // Throws CCliError(WriteFailed).
    void Commit();

private:
    static void SetRecordingBaseline(bool on);
};

}  // namespace teskcolor
