#include "display.h"

#include <tesk/export_guard.h>

#include <algorithm>
#include <cstdlib>
#include <cwctype>
#include <mutex>

namespace tesk::display {
namespace {

std::mutex g_mutex;
std::unique_ptr<Backend> g_backend;
DWORD g_access = TESK_DISPLAY_SYSTEM;

// The X server DISPLAY names; null when there is none to reach.
std::unique_ptr<Backend> ServerBackend() {
#ifdef TESK_HAVE_XRANDR
    const char* display = std::getenv("DISPLAY");
    if (display && *display) return MakeX11Backend();
#endif
    return nullptr;
}

std::unique_ptr<Backend> ChooseBackend(DWORD access) {
    if (access == TESK_DISPLAY_IN_MEMORY) return MakeVirtualBackend();
    std::unique_ptr<Backend> server = ServerBackend();
    if (!server) return access == TESK_DISPLAY_SERVER ? MakeAbsentBackend() : MakeVirtualBackend();
    if (access == TESK_DISPLAY_READ_ONLY) return MakeReadOnlyBackend(std::move(server));
    return server;
}

}  // namespace

Backend& Current() {
    std::lock_guard lock(g_mutex);
    if (!g_backend) g_backend = ChooseBackend(g_access);
    return *g_backend;
}

void Reset() {
    std::lock_guard lock(g_mutex);
    g_backend.reset();
}

bool SameDeviceName(const std::wstring& a, const std::wstring& b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (std::towupper(a[i]) != std::towupper(b[i])) return false;
    return true;
}

std::optional<size_t> AdapterShowing(const RECT& rect) {
    std::vector<Adapter> adapters = Current().Adapters();
    std::optional<size_t> best;
    int64_t bestArea = 0;
    for (size_t i = 0; i < adapters.size(); ++i) {
        if (!adapters[i].attached) continue;
        const RECT& b = adapters[i].bounds;
        int64_t w = int64_t(std::min(rect.right, b.right)) - std::max(rect.left, b.left);
        int64_t h = int64_t(std::min(rect.bottom, b.bottom)) - std::max(rect.top, b.top);
        if (w > 0 && h > 0 && w * h > bestArea) best = i, bestArea = w * h;
    }
    return best;
}

std::optional<size_t> FindAdapter(const wchar_t* name) {
    std::vector<Adapter> adapters = Current().Adapters();
    if (!name || SameDeviceName(name, L"DISPLAY")) {
        for (size_t i = 0; i < adapters.size(); ++i)
            if (adapters[i].primary) return i;
        return adapters.empty() ? std::nullopt : std::optional<size_t>(0);
    }
    for (size_t i = 0; i < adapters.size(); ++i)
        if (SameDeviceName(adapters[i].name, name)) return i;
    return std::nullopt;
}

}  // namespace tesk::display

BOOL WINAPI TeskSetDisplayAccess(DWORD access) try {
    if (access > TESK_DISPLAY_IN_MEMORY) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    std::lock_guard lock(tesk::display::g_mutex);
    tesk::display::g_access = access;
    tesk::display::g_backend.reset();
    return TRUE;
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}
