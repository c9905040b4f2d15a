// The displays behind "DISPLAY" device contexts and User32's adapter and
// monitor enumeration. gdi32.so owns them; user32.so links gdi32.so and asks
// through these functions, so both modules see one set of displays.
#pragma once
#include <windows.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#define TESK_GDI_INTERNAL __attribute__((visibility("default")))

namespace tesk::display {

inline constexpr size_t kGammaEntries = 256;
// Red, green and blue, 256 entries each: the Windows gamma-ramp layout.
using GammaRamp = std::vector<WORD>;

struct Monitor {
    std::wstring name;      // "\\.\DISPLAY1\Monitor0"
    std::wstring string;    // what the monitor calls itself
    std::wstring id;        // device identifier; the device string of profile associations
    std::wstring key;
    bool attached = true;
};

struct Adapter {
    std::wstring name;      // "\\.\DISPLAY1": the device name CreateDCW and MONITORINFOEXW use
    std::wstring string;
    std::wstring id;
    std::wstring key;
    bool attached = true;
    bool primary = false;
    RECT bounds{};          // in desktop coordinates
    std::vector<Monitor> monitors;
};

// One display system: the X server when DISPLAY names one, else a virtual
// display held in memory (TeskSetDisplayAccess narrows the choice).
class Backend {
public:
    virtual ~Backend() = default;
    virtual std::vector<Adapter> Adapters() = 0;
    virtual bool GetGamma(size_t adapter, GammaRamp& ramp) = 0;
    virtual bool SetGamma(size_t adapter, const GammaRamp& ramp) = 0;
    // The display's own profile as a Linux path; nullopt when it has none.
    virtual std::optional<std::string> Profile(size_t adapter) = 0;
    // Makes the profile file at `nativePath` the display's profile; false
    // with last error set when it cannot.
    virtual bool SetProfile(size_t adapter, const std::string& nativePath) = 0;
    // Shows `rect` of a frame buffer (0x00RRGGBB pixels, `width` a row) on
    // the screen: drawn for the adapter (origin at its top left), or for
    // `window` when that is not 0. The virtual display is its frame buffer,
    // so it has nothing to do.
    virtual void Present(size_t adapter, uintptr_t window, const uint32_t* pixels, int width, const RECT& rect) {
        (void)adapter, (void)window, (void)pixels, (void)width, (void)rect;
    }
    // Where `window` (a window of the display system, as an HWND carries it)
    // lies on the desktop; nullopt when it is not one. The virtual display
    // has no windows.
    virtual std::optional<RECT> WindowRect(uintptr_t window) {
        (void)window;
        return std::nullopt;
    }
    virtual const char* Kind() const = 0;
};

// The backend of this process, chosen on first use.
TESK_GDI_INTERNAL Backend& Current();
// Tests: forget the chosen backend so that the next use chooses again.
TESK_GDI_INTERNAL void Reset();

// Index of the adapter named `name` ("DISPLAY" and null are the primary one);
// nullopt for an unknown name.
TESK_GDI_INTERNAL std::optional<size_t> FindAdapter(const wchar_t* name);

// The adapter showing most of `rect`; nullopt when none shows any of it.
TESK_GDI_INTERNAL std::optional<size_t> AdapterShowing(const RECT& rect);

// A device context drawing into a window of the display system (GetDC).
TESK_GDI_INTERNAL HDC CreateWindowContext(uintptr_t window);

// Case-insensitive comparison of device names.
TESK_GDI_INTERNAL bool SameDeviceName(const std::wstring& a, const std::wstring& b);

std::unique_ptr<Backend> MakeVirtualBackend();
std::unique_ptr<Backend> MakeAbsentBackend();
std::unique_ptr<Backend> MakeReadOnlyBackend(std::unique_ptr<Backend> server);
#ifdef TESK_HAVE_XRANDR
std::unique_ptr<Backend> MakeX11Backend();  // null when no X server can be reached
#endif

}  // namespace tesk::display
