#include "cli/X11Window.h"

#include <poll.h>

#include <chrono>
#include <cstdlib>

#include "cli/Errors.h"
#include "host/imaging/RowIteratorBands.h"

// After the project's headers: Xlib's macros (None, Bool, Status) clash with them.
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/keysym.h>

namespace teskcolor {

void RequireDisplay(const std::string& command) {
    const char* name = std::getenv("DISPLAY");
    if (!name || !*name) throw CCliError(EExit::NoDisplay, command + " needs an X display, and DISPLAY is not set");
}

std::pair<int, int> ScreenSize() {
    RequireDisplay("a window");
    const char* name = std::getenv("DISPLAY");
    Display* x = XOpenDisplay(name);
    if (!x) throw CCliError(EExit::NoDisplay, std::string("cannot open the X display ") + name);
    const std::pair<int, int> size{DisplayWidth(x, DefaultScreen(x)), DisplayHeight(x, DefaultScreen(x))};
    XCloseDisplay(x);
    return size;
}

struct CX11Window::SState {
    Display* display = nullptr;
    Window window = 0;
    Atom deleteWindow = 0;
    int width = 0;
    int height = 0;
};

CX11Window::CX11Window(int width, int height, const std::string& title) : m_state(std::make_unique<SState>()) {
    RequireDisplay("a window");
    const char* name = std::getenv("DISPLAY");
    m_state->display = XOpenDisplay(name);
    if (!m_state->display) throw CCliError(EExit::NoDisplay, std::string("cannot open the X display ") + name);
    Display* x = m_state->display;
    m_state->width = width;
    m_state->height = height;
    m_state->window = XCreateSimpleWindow(x, DefaultRootWindow(x), 0, 0, unsigned(width), unsigned(height), 0,
                                          BlackPixel(x, DefaultScreen(x)), BlackPixel(x, DefaultScreen(x)));
    XStoreName(x, m_state->window, title.c_str());
    XSizeHints hints{};
    hints.flags = PMinSize | PMaxSize;
    hints.min_width = hints.max_width = width;
    hints.min_height = hints.max_height = height;
    XSetWMNormalHints(x, m_state->window, &hints);
    m_state->deleteWindow = XInternAtom(x, "WM_DELETE_WINDOW", False);
    XSetWMProtocols(x, m_state->window, &m_state->deleteWindow, 1);
    XSelectInput(x, m_state->window, ExposureMask | KeyPressMask | StructureNotifyMask);
}

CX11Window::~CX11Window() {
    if (!m_state->display) return;
    XDestroyWindow(m_state->display, m_state->window);
    XCloseDisplay(m_state->display);
}

HWND CX11Window::Handle() const { return reinterpret_cast<HWND>(static_cast<uintptr_t>(m_state->window)); }

void CX11Window::Show() {
    XMapRaised(m_state->display, m_state->window);
    XSync(m_state->display, False);
}

bool CX11Window::Run(double timeoutSeconds, const std::function<void()>& paint,
                     const std::function<void()>& afterFirstPaint) {
    using Clock = std::chrono::steady_clock;
    auto after = [](double seconds) {
        return Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
    };
    Display* x = m_state->display;
    bool painted = false;
    auto deadline = after(kExposeLimitSeconds);
    for (;;) {
        while (XPending(x)) {
            XEvent event;
            XNextEvent(x, &event);
            if (event.type == Expose && event.xexpose.count == 0) {
                paint();
                XSync(x, False);
                if (!painted) {
                    painted = true;
                    afterFirstPaint();
                    if (timeoutSeconds >= 0) deadline = after(timeoutSeconds);
                }
            } else if (event.type == KeyPress) {
                const KeySym key = XLookupKeysym(&event.xkey, 0);
                if (key == XK_q || key == XK_Escape) return painted;
            } else if (event.type == ClientMessage &&
                       static_cast<Atom>(event.xclient.data.l[0]) == m_state->deleteWindow) {
                return painted;
            } else if (event.type == DestroyNotify) {
                return painted;
            }
        }
        int waitMs = -1;
        if (!painted || timeoutSeconds >= 0) {
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
            if (left <= 0) return painted;
            waitMs = int(std::min<long long>(left, 1000));
        }
        pollfd connection{ConnectionNumber(x), POLLIN, 0};
        poll(&connection, 1, waitMs);
    }
}

CRowIterator CX11Window::Capture() const {
    Display* x = m_state->display;
    XImage* shot = XGetImage(x, m_state->window, 0, 0, unsigned(m_state->width), unsigned(m_state->height), AllPlanes,
                             ZPixmap);
    if (!shot) throw CCliError(EExit::Failed, "the window's pixels could not be read");
    CRowIterator image;
    if (!CRowIteratorBands::CreateRGB(image, m_state->width, m_state->height)) {
        XDestroyImage(shot);
        throw std::bad_alloc();
    }
    // Blue, green, red from a TrueColor pixel, whatever the widths of its fields.
    const unsigned long masks[3] = {shot->blue_mask, shot->green_mask, shot->red_mask};
    for (int row = 0; row < m_state->height; ++row) {
        BYTE* out = image.GetRow(row);
        for (int column = 0; column < m_state->width; ++column) {
            const unsigned long pixel = XGetPixel(shot, column, row);
            for (int channel = 0; channel < 3; ++channel) {
                const unsigned long mask = masks[channel];
                if (!mask) continue;
                const unsigned long top = mask >> __builtin_ctzl(mask);
                out[column * 3 + channel] = BYTE(((pixel & mask) >> __builtin_ctzl(mask)) * 255 / top);
            }
        }
    }
    XDestroyImage(shot);
    return image;
}

}  // namespace teskcolor
