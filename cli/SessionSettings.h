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

}  // namespace teskcolor
