// A plain X11 window for the commands that show something on the display:
// the program's own connection, close by key or window manager, and a
// screenshot of what the window shows.
#pragma once
#include <windows.h>

#include <functional>
#include <memory>
#include <string>

#include "host/imaging/RowIterator.h"

namespace teskcolor {

// Throws CCliError(NoDisplay) naming `command` when DISPLAY is unset.
void RequireDisplay(const std::string& command);

// The size of the screen DISPLAY names; throws as RequireDisplay does.
std::pair<int, int> ScreenSize();

class CX11Window {
public:
    // Throws CCliError(NoDisplay) when DISPLAY is unset or the display cannot be opened.
    CX11Window(int width, int height, const std::string& title);
    ~CX11Window();
    CX11Window(const CX11Window&) = delete;
    CX11Window& operator=(const CX11Window&) = delete;

    // The window as the Win32 layer names it.
    HWND Handle() const;
    void Show();
    // Runs until the window is closed (q, Escape, the window manager) or
    // `timeoutSeconds` have passed since it was first painted (< 0: no limit).
    // `paint` runs for every exposure; `afterFirstPaint` once, when the first
    // painting has reached the server. False when the window was never exposed
    // within kExposeLimitSeconds.
    static constexpr double kExposeLimitSeconds = 20;
    bool Run(double timeoutSeconds, const std::function<void()>& paint, const std::function<void()>& afterFirstPaint);
    // The window's pixels as 8-bit RGB (B, G, R bytes).
    CRowIterator Capture() const;

private:
    struct SState;
    std::unique_ptr<SState> m_state;
};

}  // namespace teskcolor
