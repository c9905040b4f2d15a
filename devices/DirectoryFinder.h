// A file finder over one folder: the plain files and folders of a
// "<folder>\\*.*" pattern (folders are not descended into).
#pragma once
#include <string>
#include <vector>

#include "host/CString.h"

namespace colormgr {

struct SFoundFile {
    CString fileName;  // with extension
    CString title;     // without its last extension
    CString path;      // folder, '\\', file name (Windows form)
    bool isDirectory = false;
};

// Every entry of the folder the pattern names, in the order the system reports
// them. Empty when the folder cannot be read.
std::vector<SFoundFile> FindFiles(const CString& pattern);

}  // namespace colormgr
