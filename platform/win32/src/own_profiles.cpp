// An installed program has no "ColorProfile" folder beside it: the profiles
// live under share/, at a fixed place relative to the installed libraries.
#include <dlfcn.h>
#include <tesk/own_profiles.h>
#include <tesk/path.h>
#include <unistd.h>

#include <filesystem>
#include <string>

namespace tesk::path {

namespace fs = std::filesystem;

namespace {

fs::path ExecutableProfileFolder() {
    std::error_code error;
    const fs::path executable = fs::read_symlink("/proc/self/exe", error);
    return error ? fs::path() : executable.parent_path() / "ColorProfile";
}

fs::path InstalledProfileFolder() {
    Dl_info info{};
    if (!dladdr(reinterpret_cast<void*>(&InstalledProfileFolder), &info) || !info.dli_fname) return {};
    // The loader may have found the library through a link (/lib -> usr/lib),
    // and TESK_PROFILES_FROM_LIBDIR is relative to its real folder.
    std::error_code error;
    const fs::path library = fs::canonical(info.dli_fname, error);
    if (error) return {};
    return (library.parent_path() / TESK_PROFILES_FROM_LIBDIR).lexically_normal();
}

}  // namespace

std::string OwnProfileFolder() {
    std::error_code error;
    const fs::path beside = ExecutableProfileFolder();
    if (!beside.empty() && fs::is_directory(beside, error)) return beside.string();
    return InstalledProfileFolder().string();
}

std::string WithInstalledProfileFallback(const std::string& nativePath) {
    std::error_code error;
    const fs::path path(nativePath);
    if (fs::exists(path, error) || path.parent_path() != ExecutableProfileFolder()) return nativePath;
    const fs::path installed = InstalledProfileFolder() / path.filename();
    return fs::is_regular_file(installed, error) ? installed.string() : nativePath;
}

}  // namespace tesk::path
