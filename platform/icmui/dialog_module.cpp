#include "dialog_module.h"

#include <dlfcn.h>

#include <mutex>
#include <string>

namespace tesk::icmui {
namespace {

using RunDialogEntry = int (*)(COLORMATCHSETUPW*, Choices*);

std::string BesideThisModule(const char* name) {
    Dl_info info{};
    if (!dladdr(reinterpret_cast<void*>(&RunDialogFromModule), &info) || !info.dli_fname) return name;
    std::string path = info.dli_fname;
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? name : path.substr(0, slash + 1) + name;
}

RunDialogEntry LoadEntry() {
    // Kept loaded for the life of the process: GTK cannot be unloaded safely.
    void* module = dlopen(BesideThisModule("icmui-gtk.so").c_str(), RTLD_NOW | RTLD_LOCAL);
    return module ? reinterpret_cast<RunDialogEntry>(dlsym(module, "TeskRunColorMatchingDialog")) : nullptr;
}

}  // namespace

DialogResult RunDialogFromModule(COLORMATCHSETUPW& setup, Choices& choices) {
    static std::once_flag once;
    static RunDialogEntry entry = nullptr;
    std::call_once(once, [] { entry = LoadEntry(); });
    return entry ? static_cast<DialogResult>(entry(&setup, &choices)) : DialogResult::Unavailable;
}

}  // namespace tesk::icmui
