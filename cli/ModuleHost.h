// The command line as the module's host: the settings store registered, the
// colour manager made, and names and paths handed over in the module's form.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

class CColorManager;

namespace teskcolor {

// Chooses what the command may do with the user's display, before anything
// reaches it: the commands that work on the screen use the X server and
// nothing else; those that show the display's profile read it, while what
// the colour manager sets on the display stays in this process; all others
// get a display held in memory. So no file command ever changes the screen.
void UseDisplayFor(const std::string& command);

// Registers the settings store and creates the colour manager; throws
// CCliError when the colour system cannot be loaded.
CColorManager& ColourManager();

// The colour directory as a Linux path.
std::string ColourDirectory(CColorManager& manager);

// A profile argument resolved: its bytes, where they came from, and the name
// the module opens it by.
struct SProfileSource {
    std::vector<uint8_t> bytes;
    std::string origin;       // for messages: "a.icc", "photo.jpg (embedded)"
    std::string file;         // a file holding exactly these bytes, "" for an embedded one
    std::wstring moduleName;  // a file holding these bytes, absolute, in Windows form
};

// A profile file, an image's embedded profile, or an installed profile by any
// name `profiles` prints (with or without .icc/.icm; the program's own CMYK
// profiles too). Resolved and read once a run; later calls with the same
// argument return the same object. Throws NotFound when none of these exists
// or the image has none.
const SProfileSource& ResolveProfile(const std::string& argument, CColorManager* manager);

// The profiles the settings name (working space; default CMYK profile).
const SProfileSource& WorkingSpaceProfile(CColorManager& manager);
const SProfileSource& DefaultCMYKProfile(CColorManager& manager);

// A file holding `bytes` for the rest of this run, removed when the program
// ends; `folder` "" means the temporary folder.
std::string KeepForThisRun(const std::vector<uint8_t>& bytes, const std::string& folder = "");
// A name under which the module finds the profile in the colour directory,
// for settings the module always joins to that directory (monitor, proof,
// working space). A profile found there already keeps its name; otherwise it
// is installed when `install` is set, else copied there for this run only.
std::wstring NameInColourDirectory(const SProfileSource& profile, CColorManager& manager, bool install);

// Throws CCliError(Corrupt) unless the module's reader accepts the profile,
// as `info` checks it: one it refuses must not become a setting.
void RequireAcceptedProfile(const SProfileSource& profile);

// Throws CCliError(WrongProfile) unless the profile's header has that data
// colour space ('RGB ', 'CMYK', 'GRAY'); `role` names its use in the message.
void RequireColourSpace(const SProfileSource& profile, uint32_t space, const std::string& role);

}  // namespace teskcolor
