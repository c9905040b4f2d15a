// Displays of an X server through XRandR: every connected output is an
// adapter ("\\.\DISPLAYn", in the server's output order) with one monitor;
// outputs without a CRTC are listed but not attached to the desktop. Gamma
// ramps are the outputs' CRTC gamma; display profiles are the root window's
// _ICC_PROFILE (first output) and _ICC_PROFILE_n properties, as the X colour
// management convention has them.
#ifdef TESK_HAVE_XRANDR
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/extensions/Xrandr.h>
#include <tesk/path.h>

#include <X11/Xutil.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>

#include "color_system.h"
#include "display.h"
#include "gamma_resample.h"

namespace tesk::display {
namespace {

// Errors of requests made while this is set are recorded instead of ending the process.
bool g_requestFailed = false;
int RecordError(::Display*, XErrorEvent*) {
    g_requestFailed = true;
    return 0;
}

struct Output {
    RROutput output = None;
    RRCrtc crtc = None;
    std::string name;
    RECT bounds{};
    bool primary = false;
};

std::vector<uint8_t> ReadFile(const std::string& nativePath) {
    std::ifstream in(nativePath, std::ios::binary);
    return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::string CacheFolder() {
    const char* cache = std::getenv("XDG_CACHE_HOME");
    const char* home = std::getenv("HOME");
    std::string base = cache && *cache ? cache : std::string(home ? home : "/tmp") + "/.cache";
    return base + "/teskcolor";
}

class X11Backend final : public Backend {
public:
    explicit X11Backend(::Display* display) : display_(display), root_(DefaultRootWindow(display)) {}
    ~X11Backend() override { XCloseDisplay(display_); }

    std::vector<Adapter> Adapters() override {
        std::lock_guard lock(mutex_);
        std::vector<Adapter> adapters;
        std::vector<Output> outputs = Outputs();
        for (size_t i = 0; i < outputs.size(); ++i) {
            const Output& output = outputs[i];
            std::wstring outputName = path::Wide(output.name);
            Adapter adapter;
            adapter.name = L"\\\\.\\DISPLAY" + std::to_wstring(i + 1);
            adapter.string = L"X11 output " + outputName;
            adapter.id = L"X11\\" + outputName;
            adapter.key = L"\\X11\\" + path::Wide(DisplayString(display_)) + L"\\" + outputName;
            adapter.attached = output.crtc != None;
            adapter.primary = output.primary;
            adapter.bounds = output.bounds;
            Monitor monitor;
            monitor.name = adapter.name + L"\\Monitor0";
            monitor.string = L"Monitor on " + outputName;
            monitor.id = L"MONITOR\\X11-" + outputName + L"\\{4d36e96e-e325-11ce-bfc1-08002be10318}\\0000";
            monitor.key = adapter.key + L"\\Monitor0";
            monitor.attached = adapter.attached;
            adapter.monitors.push_back(monitor);
            adapters.push_back(adapter);
        }
        return adapters;
    }

    bool GetGamma(size_t adapter, GammaRamp& ramp) override {
        std::lock_guard lock(mutex_);
        RRCrtc crtc = CrtcOf(adapter);
        if (crtc == None) return false;
        int size = XRRGetCrtcGammaSize(display_, crtc);
        XRRCrtcGamma* gamma = size > 0 ? XRRGetCrtcGamma(display_, crtc) : nullptr;
        if (!gamma) return false;
        ramp.assign(3 * kGammaEntries, 0);
        ResampleRamp(gamma->red, size_t(size), ramp.data(), kGammaEntries);
        ResampleRamp(gamma->green, size_t(size), ramp.data() + kGammaEntries, kGammaEntries);
        ResampleRamp(gamma->blue, size_t(size), ramp.data() + 2 * kGammaEntries, kGammaEntries);
        XRRFreeGamma(gamma);
        return true;
    }

    bool SetGamma(size_t adapter, const GammaRamp& ramp) override {
        std::lock_guard lock(mutex_);
        RRCrtc crtc = CrtcOf(adapter);
        if (crtc == None || ramp.size() != 3 * kGammaEntries) return false;
        int size = XRRGetCrtcGammaSize(display_, crtc);
        XRRCrtcGamma* gamma = size > 0 ? XRRAllocGamma(size) : nullptr;
        if (!gamma) return false;
        ResampleRamp(ramp.data(), kGammaEntries, gamma->red, size_t(size));
        ResampleRamp(ramp.data() + kGammaEntries, kGammaEntries, gamma->green, size_t(size));
        ResampleRamp(ramp.data() + 2 * kGammaEntries, kGammaEntries, gamma->blue, size_t(size));
        bool ok = Checked([&] { XRRSetCrtcGamma(display_, crtc, gamma); });
        XRRFreeGamma(gamma);
        return ok;
    }

    std::optional<std::string> Profile(size_t adapter) override {
        std::lock_guard lock(mutex_);
        std::vector<uint8_t> bytes;
        if (!ReadProfileProperty(adapter, bytes)) return std::nullopt;
        return FileHolding(bytes, adapter);
    }

    bool SetProfile(size_t adapter, const std::string& nativePath) override {
        std::vector<uint8_t> bytes = ReadFile(nativePath);
        std::lock_guard lock(mutex_);
        if (bytes.empty() || adapter >= Outputs().size()) {
            SetLastError(bytes.empty() ? ERROR_FILE_NOT_FOUND : ERROR_INVALID_PARAMETER);
            return false;
        }
        Atom property = XInternAtom(display_, PropertyName(adapter).c_str(), False);
        Atom version = XInternAtom(display_, "_ICC_PROFILE_IN_X_VERSION", False);
        long versionValue = 4;  // version 0.4 of the convention
        bool ok = Checked([&] {
            XChangeProperty(display_, root_, property, XA_CARDINAL, 8, PropModeReplace, bytes.data(), int(bytes.size()));
            XChangeProperty(display_, root_, version, XA_CARDINAL, 32, PropModeReplace,
                            reinterpret_cast<unsigned char*>(&versionValue), 1);
        });
        if (!ok) SetLastError(ERROR_WRITE_FAULT);
        return ok;
    }

    void Present(size_t adapter, uintptr_t window, const uint32_t* pixels, int width, const RECT& rect) override {
        std::lock_guard lock(mutex_);
        std::vector<Output> outputs = Outputs();
        Visual* visual = DefaultVisual(display_, DefaultScreen(display_));
        Window target = window ? Window(window) : root_;
        // Frame buffer pixels are handed over as they are only to a 24-bit true-colour screen.
        if ((!window && (adapter >= outputs.size() || outputs[adapter].crtc == None)) ||
            DefaultDepth(display_, DefaultScreen(display_)) != 24 ||
            visual->red_mask != 0xFF0000 || visual->green_mask != 0x00FF00 || visual->blue_mask != 0x0000FF)
            return;
        int w = rect.right - rect.left, h = rect.bottom - rect.top;
        if (w <= 0 || h <= 0) return;
        std::vector<uint32_t> block(size_t(w) * size_t(h));
        for (int y = 0; y < h; ++y)
            std::copy_n(pixels + size_t(rect.top + y) * size_t(width) + size_t(rect.left), size_t(w),
                        block.begin() + std::ptrdiff_t(size_t(y) * size_t(w)));
        XImage* image = XCreateImage(display_, visual, 24, ZPixmap, 0, reinterpret_cast<char*>(block.data()),
                                     unsigned(w), unsigned(h), 32, w * 4);
        if (!image) return;
        RECT origin = window ? RECT{} : outputs[adapter].bounds;
        // The window may have gone since its DC was made.
        Checked([&] {
            GC gc = XCreateGC(display_, target, 0, nullptr);
            XPutImage(display_, target, gc, image, 0, 0, origin.left + rect.left, origin.top + rect.top, unsigned(w),
                      unsigned(h));
            XFreeGC(display_, gc);
        });
        image->data = nullptr;  // the block is ours
        XDestroyImage(image);
        XFlush(display_);
    }

    std::optional<RECT> WindowRect(uintptr_t window) override {
        std::lock_guard lock(mutex_);
        if (window == 0 || window > 0xFFFFFFFFu) return std::nullopt;  // XIDs are 29-bit numbers
        XWindowAttributes attributes{};
        int x = 0, y = 0;
        Window child = None;
        bool ok = Checked([&] {
            if (XGetWindowAttributes(display_, Window(window), &attributes))
                XTranslateCoordinates(display_, Window(window), root_, 0, 0, &x, &y, &child);
        });
        if (!ok || attributes.width <= 0) return std::nullopt;
        return RECT{x, y, x + attributes.width, y + attributes.height};
    }

    const char* Kind() const override { return "x11"; }

private:
    std::vector<Output> Outputs() {
        std::vector<Output> outputs;
        XRRScreenResources* resources = XRRGetScreenResourcesCurrent(display_, root_);
        if (!resources) return outputs;
        RROutput primary = XRRGetOutputPrimary(display_, root_);
        for (int i = 0; i < resources->noutput; ++i) {
            XRROutputInfo* info = XRRGetOutputInfo(display_, resources, resources->outputs[i]);
            if (!info) continue;
            if (info->connection == RR_Connected) {
                Output output;
                output.output = resources->outputs[i];
                output.crtc = info->crtc;
                output.name.assign(info->name, size_t(info->nameLen));
                output.primary = output.output == primary;
                if (info->crtc != None)
                    if (XRRCrtcInfo* crtc = XRRGetCrtcInfo(display_, resources, info->crtc)) {
                        output.bounds = RECT{crtc->x, crtc->y, LONG(crtc->x + int(crtc->width)),
                                             LONG(crtc->y + int(crtc->height))};
                        XRRFreeCrtcInfo(crtc);
                    }
                outputs.push_back(output);
            }
            XRRFreeOutputInfo(info);
        }
        XRRFreeScreenResources(resources);
        // Without a primary output set, the first active one is primary.
        bool anyPrimary = false;
        for (const Output& output : outputs) anyPrimary |= output.primary;
        if (!anyPrimary)
            for (Output& output : outputs)
                if (output.crtc != None) {
                    output.primary = true;
                    break;
                }
        return outputs;
    }

    RRCrtc CrtcOf(size_t adapter) {
        std::vector<Output> outputs = Outputs();
        return adapter < outputs.size() ? outputs[adapter].crtc : None;
    }

    static std::string PropertyName(size_t adapter) {
        return adapter == 0 ? "_ICC_PROFILE" : "_ICC_PROFILE_" + std::to_string(adapter);
    }

    bool ReadProfileProperty(size_t adapter, std::vector<uint8_t>& bytes) {
        Atom property = XInternAtom(display_, PropertyName(adapter).c_str(), True);
        if (property == None) return false;
        Atom type = None;
        int format = 0;
        unsigned long count = 0, remaining = 0;
        unsigned char* data = nullptr;
        // Profiles are at most a few megabytes; the length is counted in 32-bit units.
        if (XGetWindowProperty(display_, root_, property, 0, 16 << 20, False, XA_CARDINAL, &type, &format, &count,
                               &remaining, &data) != Success)
            return false;
        bool ok = data && type == XA_CARDINAL && format == 8 && count > 0;
        if (ok) bytes.assign(data, data + count);
        if (data) XFree(data);
        return ok;
    }

    // A file with the display profile's bytes: the installed profile with the
    // same bytes when there is one, so that its name means something, else a
    // copy in the user's cache folder.
    std::optional<std::string> FileHolding(const std::vector<uint8_t>& bytes, size_t adapter) {
        std::error_code error;
        for (const auto& entry : std::filesystem::directory_iterator(gdi::ColorDirectory(), error))
            if (entry.is_regular_file(error) && entry.file_size(error) == bytes.size() &&
                ReadFile(entry.path().string()) == bytes)
                return entry.path().string();
        std::string folder = CacheFolder();
        std::filesystem::create_directories(folder, error);
        std::string file = folder + "/display" + std::to_string(adapter + 1) + ".icc";
        if (ReadFile(file) != bytes) {
            std::string text(bytes.begin(), bytes.end());
            if (!path::WriteFileAtomically(file, text)) return std::nullopt;
        }
        return file;
    }

    template <typename Requests>
    bool Checked(Requests requests) {
        XSync(display_, False);
        g_requestFailed = false;
        auto previous = XSetErrorHandler(RecordError);
        requests();
        XSync(display_, False);
        XSetErrorHandler(previous);
        return !g_requestFailed;
    }

    std::mutex mutex_;
    ::Display* display_;
    Window root_;
};

}  // namespace

std::unique_ptr<Backend> MakeX11Backend() {
    ::Display* display = XOpenDisplay(nullptr);
    if (!display) return nullptr;
    int eventBase = 0, errorBase = 0, major = 0, minor = 0;
    if (!XRRQueryExtension(display, &eventBase, &errorBase) || !XRRQueryVersion(display, &major, &minor) ||
        major < 1 || (major == 1 && minor < 3)) {
        XCloseDisplay(display);
        return nullptr;
    }
    return std::make_unique<X11Backend>(display);
}

}  // namespace tesk::display
#endif
