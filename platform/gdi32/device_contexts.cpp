// CreateDCW, CreateCompatibleDC, DeleteDC and GetDeviceCaps.
#include <tesk/export_guard.h>

#include <algorithm>
#include <cstring>

#include "device_mode.h"
#include "display.h"
#include "gdi_objects.h"

using namespace tesk;

namespace {

HDC CreateDisplayContext(size_t adapter) {
    auto dc = std::make_shared<gdi::DeviceContext>();
    dc->kind = gdi::DeviceKind::Display;
    dc->adapter = adapter;
    return gdi::AddDeviceContext(std::move(dc));
}

HDC CreatePrinterContext(const printers::Printer& printer, const DEVMODEW* requested) {
    auto dc = std::make_shared<gdi::DeviceContext>();
    dc->kind = gdi::DeviceKind::Printer;
    dc->printer = printer;
    dc->devMode = gdi::DefaultDeviceMode(printer);
    if (requested) gdi::MergeDeviceMode(dc->devMode, *requested);
    return gdi::AddDeviceContext(std::move(dc));
}

}  // namespace

HDC tesk::display::CreateWindowContext(uintptr_t window) {
    auto lock = gdi::Lock();
    std::optional<RECT> rect = display::Current().WindowRect(window);
    if (!rect) {
        SetLastError(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    auto dc = std::make_shared<gdi::DeviceContext>();
    dc->kind = gdi::DeviceKind::Display;
    dc->window = window;
    // A window belongs to the display showing most of it.
    std::optional<size_t> adapter = display::AdapterShowing(*rect);
    if (!adapter) adapter = display::FindAdapter(nullptr);
    dc->adapter = adapter.value_or(0);
    dc->windowSurface = std::make_shared<gdi::Bitmap>(std::max<LONG>(1, rect->right - rect->left),
                                                      std::max<LONG>(1, rect->bottom - rect->top));
    return gdi::AddDeviceContext(std::move(dc));
}

HDC WINAPI CreateDCW(LPCWSTR pwszDriver, LPCWSTR pwszDevice, LPCWSTR pszPort, const DEVMODEW* pdm) try {
    (void)pszPort;
    auto lock = gdi::Lock();
    // "DISPLAY" or a display device name as the driver (the device may narrow
    // "DISPLAY" down to one adapter), or a display device name as the device.
    bool driverIsDisplay = pwszDriver && (display::SameDeviceName(pwszDriver, L"DISPLAY") ||
                                          display::FindAdapter(pwszDriver).has_value());
    if (driverIsDisplay) {
        const wchar_t* name = display::SameDeviceName(pwszDriver, L"DISPLAY") && pwszDevice && *pwszDevice
                                  ? pwszDevice
                                  : pwszDriver;
        if (std::optional<size_t> adapter = display::FindAdapter(name)) return CreateDisplayContext(*adapter);
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    if (pwszDevice && *pwszDevice) {
        if (std::optional<size_t> adapter = display::FindAdapter(pwszDevice))
            if (!display::SameDeviceName(pwszDevice, L"DISPLAY")) return CreateDisplayContext(*adapter);
        if (std::optional<printers::Printer> printer = printers::Find(pwszDevice))
            return CreatePrinterContext(*printer, pdm);
        SetLastError(ERROR_INVALID_PRINTER_NAME);
        return nullptr;
    }
    SetLastError(ERROR_INVALID_PARAMETER);
    return nullptr;
} catch (...) {
    return tesk::FailAtBoundary(HDC{});
}

HDC WINAPI CreateCompatibleDC(HDC hdc) try {
    auto lock = gdi::Lock();
    auto memory = std::make_shared<gdi::DeviceContext>();
    memory->kind = gdi::DeviceKind::Memory;
    if (hdc) {
        gdi::DeviceContext* other = gdi::FindDeviceContext(hdc);
        if (!other) return nullptr;
        memory->adapter = other->adapter;
    } else if (std::optional<size_t> primary = display::FindAdapter(nullptr)) {
        memory->adapter = *primary;
    }
    // Like Windows, a new memory DC holds a 1 x 1 bitmap until one is selected.
    auto stock = std::make_shared<gdi::Bitmap>(1, 1);
    stock->stock = true;
    HBITMAP stockHandle = gdi::AddBitmap(stock);
    memory->bitmap = memory->stockBitmap = stockHandle;
    HDC handle = gdi::AddDeviceContext(std::move(memory));
    stock->selectedInto = handle;
    return handle;
} catch (...) {
    return tesk::FailAtBoundary(HDC{});
}

BOOL WINAPI DeleteDC(HDC hdc) try {
    auto lock = gdi::Lock();
    gdi::DeviceContext* dc = gdi::FindDeviceContext(hdc);
    if (!dc) return FALSE;
    if (dc->kind == gdi::DeviceKind::Memory) {
        if (gdi::Bitmap* selected = gdi::FindBitmap(dc->bitmap)) selected->selectedInto = nullptr;
        gdi::RemoveBitmap(dc->stockBitmap);
    }
    return gdi::RemoveDeviceContext(hdc) ? TRUE : FALSE;
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}

int WINAPI GetDeviceCaps(HDC hdc, int index) try {
    auto lock = gdi::Lock();
    gdi::DeviceContext* dc = gdi::FindDeviceContext(hdc);
    if (!dc) return 0;
    if (dc->kind == gdi::DeviceKind::Printer) {
        gdi::PageGeometry page = gdi::PageOf(dc->devMode);
        switch (index) {
        case TECHNOLOGY: return DT_RASPRINTER;
        case HORZRES: case PHYSICALWIDTH: return page.width;
        case VERTRES: case PHYSICALHEIGHT: return page.height;
        case HORZSIZE: return page.widthMillimetres;
        case VERTSIZE: return page.heightMillimetres;
        case LOGPIXELSX: case LOGPIXELSY: return page.dpi;
        case PHYSICALOFFSETX: case PHYSICALOFFSETY: return 0;
        case BITSPIXEL: return 24;
        case PLANES: return 1;
        case NUMCOLORS: return -1;
        case RASTERCAPS: return RC_BITBLT | RC_DIBTODEV | RC_STRETCHDIB | RC_STRETCHBLT;
        case COLORMGMTCAPS: return CM_NONE;
        default: return 0;
        }
    }
    // Display and memory DCs describe the display (as on Windows, a memory DC
    // reports the screen's size, not its bitmap's).
    std::vector<display::Adapter> adapters = display::Current().Adapters();
    RECT bounds = dc->adapter < adapters.size() ? adapters[dc->adapter].bounds : RECT{0, 0, 0, 0};
    const int dpi = 96;
    switch (index) {
    case TECHNOLOGY: return DT_RASDISPLAY;
    case HORZRES: return bounds.right - bounds.left;
    case VERTRES: return bounds.bottom - bounds.top;
    case HORZSIZE: return int((bounds.right - bounds.left) * 254 / (dpi * 10));
    case VERTSIZE: return int((bounds.bottom - bounds.top) * 254 / (dpi * 10));
    case LOGPIXELSX: case LOGPIXELSY: return dpi;
    case BITSPIXEL: return 32;
    case PLANES: return 1;
    case NUMCOLORS: return -1;
    case RASTERCAPS: return RC_BITBLT | RC_DIBTODEV | RC_STRETCHDIB | RC_STRETCHBLT;
    case COLORMGMTCAPS: return dc->kind == gdi::DeviceKind::Display ? CM_GAMMA_RAMP : CM_NONE;
    default: return 0;
    }
} catch (...) {
    return tesk::FailAtBoundary(0);
}
