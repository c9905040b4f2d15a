// The settings store the command line registers with the host's singleton
// manager. It reads and writes the user's settings file, except for the
// overrides of one run (`--cmyk PROFILE`, a proof profile for `proof`): once
// a command calls KeepWritesForThisRun(), the module's setters change values
// that only this process sees, and the user's saved settings stay as they were.
#pragma once

namespace teskcolor {

// Registers the store unless one is registered already. Call before the
// colour manager is first created, since it reads its settings then.
void RegisterSessionSettingsStore();
// From now on, writes stay in memory for this process.
void KeepWritesForThisRun();

}  // namespace teskcolor
