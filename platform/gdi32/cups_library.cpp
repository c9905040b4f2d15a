#ifdef TESK_HAVE_CUPS
#include "cups_library.h"

#include <dlfcn.h>

namespace tesk::printers {
namespace {

template <typename Function>
bool Bind(void* library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(dlsym(library, name));
    return function != nullptr;
}

const CupsLibrary* Load() {
    // Kept for the life of the process: CUPS keeps threads and connections of its own.
    void* library = dlopen("libcups.so.2", RTLD_NOW | RTLD_LOCAL);
    if (!library) return nullptr;
    static CupsLibrary cups;
    const bool bound = Bind(library, "cupsGetDests2", cups.getDests2) && Bind(library, "cupsFreeDests", cups.freeDests) &&
                       Bind(library, "cupsGetOption", cups.getOption) && Bind(library, "cupsGetPPD", cups.getPPD) &&
                       Bind(library, "cupsAddOption", cups.addOption) &&
                       Bind(library, "cupsFreeOptions", cups.freeOptions) &&
                       Bind(library, "cupsPrintFile2", cups.printFile2);
    return bound ? &cups : nullptr;
}

}  // namespace

const CupsLibrary* Cups() {
    static const CupsLibrary* const cups = Load();
    return cups;
}

}  // namespace tesk::printers
#endif
