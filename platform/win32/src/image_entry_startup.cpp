// Linked into every shared object that is a Windows module, as a Windows C
// runtime links its DLL start-up code: the dynamic linker runs this after the
// object's own initialisers (it is linked last) and before its finalisers, and
// the loader takes it from there. The object itself needs no constructor.
#include "image_entry.h"

namespace {

void Anchor() {}

__attribute__((constructor)) void ImageMapped() {
    tesk::loader::ImageEntry(reinterpret_cast<const void*>(&Anchor), DLL_PROCESS_ATTACH);
}

__attribute__((destructor)) void ImageUnmapping() {
    tesk::loader::ImageEntry(reinterpret_cast<const void*>(&Anchor), DLL_PROCESS_DETACH);
}

}  // namespace
