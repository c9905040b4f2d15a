#include "module/FileProfileRecord.h"

#include <cwchar>

namespace tesk {

PROFILE* AllocFileProfileRecord(const CString& path) {
    const size_t length = static_cast<size_t>(path.GetLength());
    HGLOBAL block = ::GlobalAlloc(GMEM_FIXED | GMEM_ZEROINIT, sizeof(PROFILE) + (length + 1) * sizeof(wchar_t));
    if (!block) return nullptr;
    auto* record = static_cast<PROFILE*>(block);
    auto* text = reinterpret_cast<wchar_t*>(record + 1);
    std::wmemcpy(text, path.GetString(), length);
    record->dwType = PROFILE_FILENAME;
    record->pProfileData = text;
    record->cbDataSize = static_cast<DWORD>(2 * (length + 1));
    return record;
}

void FreeFileProfileRecord(PROFILE* record) {
    if (record) ::GlobalFree(::GlobalHandle(record));
}

}  // namespace tesk
