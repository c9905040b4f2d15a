#include "devices/DirectoryFinder.h"

#include <dirent.h>
#include <sys/stat.h>

#include <tesk/path.h>

namespace colormgr {

std::vector<SFoundFile> FindFiles(const CString& pattern) {
    std::vector<SFoundFile> found;
    // Without a folder (no colour directory was had) there is nothing to search.
    const int separator = pattern.ReverseFind(L'\\');
    if (separator <= 0) return found;
    CString folder = pattern.Left(separator);
    const std::string nativeFolder = tesk::path::ToNative(folder.GetString());
    DIR* directory = ::opendir(nativeFolder.c_str());
    if (!directory) return found;
    while (const dirent* entry = ::readdir(directory)) {
        SFoundFile file;
        const std::string name = entry->d_name;
        file.fileName = CString(tesk::path::Wide(name));
        file.isDots = name == "." || name == "..";
        const int dot = file.fileName.ReverseFind(L'.');
        file.title = dot > 0 ? file.fileName.Left(dot) : file.fileName;
        file.path = folder + L"\\" + file.fileName;
        struct stat info {};
        const std::string nativePath = nativeFolder + "/" + name;
        file.isDirectory = ::stat(nativePath.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
        found.push_back(std::move(file));
    }
    ::closedir(directory);
    return found;
}

}  // namespace colormgr
