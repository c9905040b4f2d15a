// Looks up one export of a platform module into a typed function pointer.
#pragma once
#include <windows.h>

namespace tesk::icc {

template <typename Function>
bool BindProc(HMODULE module, const char* name, Function& slot) {
    FARPROC proc = module ? GetProcAddress(module, name) : nullptr;
    // Through void(*)() so that the cast between function types is explicit.
    slot = reinterpret_cast<Function>(reinterpret_cast<void (*)()>(proc));
    return slot != nullptr;
}

}  // namespace tesk::icc
