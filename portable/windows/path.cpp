#include <windows.h>

#include <tesk/path.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

namespace tesk::path {

std::string ToNative(const wchar_t* windowsPath) {
    if (!windowsPath) return {};
    std::wstring text(windowsPath);
    for (wchar_t& ch : text)
        if (ch == L'/') ch = L'\\';
    // The module joins a folder ending in a separator with "\\", giving two in
    // a row; a leading pair (a UNC path) is kept.
    std::wstring native;
    native.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i)
        if (!(i > 1 && text[i] == L'\\' && native.back() == L'\\')) native += text[i];
    return Utf8(native);
}

std::string ConfigDirectory() {
    std::wstring base;
    if (const wchar_t* appData = _wgetenv(L"APPDATA"); appData && *appData) {
        base = appData;
    } else {
        wchar_t temp[MAX_PATH + 1] = {};
        const DWORD length = GetTempPathW(MAX_PATH + 1, temp);
        base = std::wstring(temp, length > 0 && length <= MAX_PATH ? length : 0);
        while (!base.empty() && base.back() == L'\\') base.pop_back();
    }
    const std::wstring dir = base + L"\\teskcolor";
    std::error_code ignored;
    std::filesystem::create_directories(std::filesystem::path(dir), ignored);
    return Utf8(dir);
}

bool WriteFileAtomically(const std::string& nativePath, const std::string& bytes) {
    const std::wstring target = Wide(nativePath);
    std::wstring temp;
    HANDLE file = INVALID_HANDLE_VALUE;
    // A fresh name beside the target, so the rename never crosses volumes:
    // the name, a dot and six characters, as on Linux.
    unsigned long long seed = GetTickCount64() * 2654435761ull ^ GetCurrentProcessId();
    for (unsigned attempt = 0; attempt < 100 && file == INVALID_HANDLE_VALUE; ++attempt) {
        temp = target + L".";
        for (int i = 0; i < 6; ++i, seed /= 36) temp += L"0123456789abcdefghijklmnopqrstuvwxyz"[seed % 36];
        seed = seed * 6364136223846793005ull + 1442695040888963407ull + attempt;
        file = CreateFileW(temp.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file == INVALID_HANDLE_VALUE && GetLastError() != ERROR_FILE_EXISTS) return false;
    }
    if (file == INVALID_HANDLE_VALUE) return false;
    size_t done = 0;
    bool ok = true;
    while (ok && done < bytes.size()) {
        const DWORD chunk = static_cast<DWORD>(std::min<size_t>(bytes.size() - done, 1u << 30));
        DWORD written = 0;
        ok = WriteFile(file, bytes.data() + done, chunk, &written, nullptr) && written > 0;
        done += written;
    }
    // The data must be on disk before the rename makes it the file.
    ok = ok && FlushFileBuffers(file);
    ok = CloseHandle(file) && ok;
    ok = ok && MoveFileExW(temp.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
    if (!ok) DeleteFileW(temp.c_str());
    return ok;
}

}  // namespace tesk::path
