#include "module/Trace.h"

#include <cstdarg>
#include <cstdlib>
#include <cwchar>
#include <cwctype>
#include <memory>
#include <new>
#include <string>

#include "host/CString.h"

namespace {

// Named events of the host's start-up hot-key protocol. The names are the
// host's; the module only creates them when the host has not.
constexpr const wchar_t* kCheckpointEvent = L"QFX_STARTUP_CHECKPOINT";
constexpr const wchar_t* kHotKeyCtrlAltEvent = L"QFX_STARTUP_HOTKEY_CTRL_ALT";
constexpr const wchar_t* kHotKeyCtrlShiftEvent = L"QFX_STARTUP_HOTKEY_CTRL_SHIFT";
constexpr const wchar_t* kHotKeyShiftEvent = L"QFX_STARTUP_HOTKEY_SHIFT";
constexpr const wchar_t* kDebugEnableEvent = L"QFX_OUTPUT_DEBUG_ENABLE";
constexpr const wchar_t* kDebugKey = L"Software\\Vesko\\Quenfold Pro\\X9\\Debug";

bool IsHeld(int key) { return (GetAsyncKeyState(key) & 0x8000) != 0; }

class TraceSwitch {
public:
    TraceSwitch() { Decide(); }
    ~TraceSwitch() {
        for (HANDLE handle : {m_hDebugEvent, m_hHotKeyEvent, m_hCheckpointEvent})
            if (handle) CloseHandle(handle);
    }
    bool Enabled() const { return m_bEnabled; }

private:
    void Decide() {
        HANDLE checkpoint = OpenEventW(SYNCHRONIZE, TRUE, kCheckpointEvent);
        if (!checkpoint) {
            const wchar_t* hotKey = nullptr;
            if (IsHeld(VK_CONTROL) && IsHeld(VK_MENU))
                hotKey = kHotKeyCtrlAltEvent;
            else if (IsHeld(VK_CONTROL) && IsHeld(VK_SHIFT))
                hotKey = kHotKeyCtrlShiftEvent;
            else if (IsHeld(VK_SHIFT))
                hotKey = kHotKeyShiftEvent;
            if (hotKey) m_hHotKeyEvent = CreateEventW(nullptr, TRUE, FALSE, hotKey);
            m_hCheckpointEvent = CreateEventW(nullptr, TRUE, FALSE, kCheckpointEvent);
            if (m_hCheckpointEvent && GetLastError() == ERROR_ALREADY_EXISTS) {
                CloseHandle(m_hCheckpointEvent);
                m_hCheckpointEvent = nullptr;
            }
        } else {
            CloseHandle(checkpoint);
        }

        if (HANDLE existing = OpenEventW(SYNCHRONIZE, FALSE, kDebugEnableEvent)) {
            m_bEnabled = WaitForSingleObject(existing, 0) == WAIT_OBJECT_0;
            CloseHandle(existing);
            return;
        }
        HANDLE created = CreateEventW(nullptr, TRUE, FALSE, kDebugEnableEvent);
        if (!created) return;
        if (GetLastError() == ERROR_ALREADY_EXISTS)
            CloseHandle(created);  // another module got there first; it keeps the event
        else
            m_hDebugEvent = created;

        m_bEnabled = ReadRegistrySwitch();
        if (m_bEnabled && m_hDebugEvent) SetEvent(m_hDebugEvent);
    }

    static bool ReadRegistrySwitch() {
        HKEY key = nullptr;
        if (RegOpenKeyExW(HKEY_CURRENT_USER, kDebugKey, 0, KEY_READ, &key) != ERROR_SUCCESS) return false;
        DWORD value = 0, size = sizeof(value), type = 0;
        bool enabled = RegQueryValueExW(key, L"Enable", nullptr, &type, reinterpret_cast<BYTE*>(&value), &size) ==
                           ERROR_SUCCESS &&
                       size != 0 && value != 0;
        RegCloseKey(key);
        return enabled;
    }

    bool m_bEnabled = false;
    HANDLE m_hDebugEvent = nullptr;
    HANDLE m_hHotKeyEvent = nullptr;
    HANDLE m_hCheckpointEvent = nullptr;
};

const TraceSwitch& Switch() {
    static TraceSwitch traceSwitch;
    return traceSwitch;
}

bool EqualsNoCase(const wchar_t* a, const wchar_t* b) {
    for (; *a && *b; ++a, ++b)
        if (std::towlower(*a) != std::towlower(*b)) return false;
    return *a == *b;
}

std::wstring FormatPiece(const wchar_t* format, ...) {
    va_list args;
    va_start(args, format);
    std::wstring text = FormatWide(format, args);
    va_end(args);
    return text;
}

}  // namespace

bool IsTraceEnabled() { return Switch().Enabled(); }

void Trace(const RTRACE& record, const wchar_t* format, ...) {
    if (!Switch().Enabled() || !record.m_pszTag || EqualsNoCase(record.m_pszTag, kTraceDebugTag)) return;

    std::wstring pieces[5];
    pieces[0] = FormatPiece(L"[%d]", static_cast<int>(GetCurrentThreadId()));
    if (*record.m_pszTag) pieces[1] = FormatPiece(L"%s", record.m_pszTag);
    if (record.m_pszCategory && *record.m_pszCategory) pieces[2] = FormatPiece(L"[%s]\t", record.m_pszCategory);
    if (record.m_pszSourceFile && *record.m_pszSourceFile)
        pieces[3] = FormatPiece(L"[%s(%d)]:\t", record.m_pszSourceFile, record.m_nLine);
    else
        pieces[3] = L":\t";
    va_list args;
    va_start(args, format);
    pieces[4] = format ? FormatWide(format, args) : std::wstring();
    va_end(args);

    size_t length = 1;
    for (const auto& piece : pieces) length += piece.size();
    std::unique_ptr<wchar_t[]> line(new (std::nothrow) wchar_t[length]);
    if (!line) return;
    wchar_t* cursor = line.get();
    for (const auto& piece : pieces) cursor = std::wmemcpy(cursor, piece.data(), piece.size()) + piece.size();
    *cursor = 0;
    OutputDebugStringW(line.get());
}
