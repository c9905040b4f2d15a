// Binding a platform function by name: the one way the module reaches an
// export of a colour-system or user module.
#pragma once
#include <windows.h>

namespace tesk {

// Looks `name` up in `module` into a typed function pointer; null, and false,
// when the module or the export is missing.
template <typename Function>
bool BindProc(HMODULE module, const char* name, Function& slot) {
    FARPROC proc = module ? GetProcAddress(module, name) : nullptr;
    // Through void(*)() so that the cast between function types is explicit.
    slot = reinterpret_cast<Function>(reinterpret_cast<void (*)()>(proc));
    return slot != nullptr;
}

}  // namespace tesk
