// How a shared object built as a Windows module tells the loader that it was
// mapped or is going away; the loader then calls the object's exported DllMain.
#pragma once
#include <windows.h>

namespace tesk::loader {
// `addressInImage` is any address inside the object; `reason` is
// DLL_PROCESS_ATTACH or DLL_PROCESS_DETACH. Each runs DllMain at most once.
TESK_WIN32_CXX_API void ImageEntry(const void* addressInImage, DWORD reason);
}  // namespace tesk::loader
