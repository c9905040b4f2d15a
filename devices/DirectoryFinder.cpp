#include "devices/DirectoryFinder.h"

#include <tesk/path.h>

#include <filesystem>

namespace colormgr {

std::vector<SFoundFile> FindFiles(const CString& pattern) {
    std::vector<SFoundFile> found;
    // Without a folder (no colour directory was had) there is nothing to search.
    const int separator = pattern.ReverseFind(L'\\');
    if (separator <= 0) return found;
    CString folder = pattern.Left(separator);
    const std::filesystem::path nativeFolder = tesk::path::FileSystemPath(tesk::path::ToNative(folder.GetString()));
    std::error_code error;
    for (std::filesystem::directory_iterator entries(nativeFolder, error), end; !error && entries != end;
         entries.increment(error)) {
        SFoundFile file;
        file.fileName = CString(tesk::path::Wide(tesk::path::Utf8Path(entries->path().filename())));
        const int dot = file.fileName.ReverseFind(L'.');
        file.title = dot > 0 ? file.fileName.Left(dot) : file.fileName;
        file.path = folder + L"\\" + file.fileName;
        std::error_code ignored;
        file.isDirectory = entries->is_directory(ignored);
        found.push_back(std::move(file));
    }
    return found;
}

}  // namespace colormgr
