// libcups, loaded on first use: it brings some thirty libraries (TLS,
// Kerberos, Avahi, D-Bus) that a process which never prints need not map.
#pragma once
#include <cups/cups.h>
#include <cups/ppd.h>

namespace tesk::printers {

// CUPS marks its PPD calls as going away with PPDs themselves; while queues
// have PPDs, that is where their profiles are.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
struct CupsLibrary {
    decltype(&cupsGetDests2) getDests2;
    decltype(&cupsFreeDests) freeDests;
    decltype(&cupsGetOption) getOption;
    decltype(&cupsGetPPD) getPPD;
    decltype(&cupsAddOption) addOption;
    decltype(&cupsFreeOptions) freeOptions;
    decltype(&cupsPrintFile2) printFile2;
};
#pragma GCC diagnostic pop

// Null when libcups cannot be loaded or lacks one of these calls.
const CupsLibrary* Cups();

}  // namespace tesk::printers
