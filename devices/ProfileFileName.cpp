#include "devices/ProfileFileName.h"

#include <algorithm>

namespace colormgr {

CString FileNameOfPath(const wchar_t* path) {
    CString full(path);
    const int separator = std::max(full.ReverseFind(L'\\'), full.ReverseFind(L'/'));
    CString fileName = separator >= 0 ? full.Mid(separator + 1) : full;
    // Title and extension are put back together as the name is split: a
    // trailing dot is kept as it stands.
    const int dot = fileName.ReverseFind(L'.');
    CString result;
    result.Format(L"%s%s", (dot >= 0 ? fileName.Left(dot) : fileName).GetString(),
                  (dot >= 0 ? fileName.Mid(dot) : CString()).GetString());
    return result;
}

}  // namespace colormgr
