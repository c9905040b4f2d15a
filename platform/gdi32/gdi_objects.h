// Device contexts and bitmaps behind GDI handles. Handles are numbers handed
// out by this table, never pointers, so a closed or foreign handle is simply
// not found (ERROR_INVALID_HANDLE) instead of being dereferenced.
#pragma once
#include <windows.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "printers.h"

namespace tesk::gdi {

// 32 bits a pixel, laid out as a Windows 32-bit DIB: B, G, R, unused.
struct Bitmap {
    int width = 0;
    int height = 0;
    std::vector<uint32_t> pixels;  // 0x00RRGGBB, top row first
    HDC selectedInto = nullptr;
    bool stock = false;  // a memory DC's initial bitmap; DeleteObject refuses it

    Bitmap(int w, int h) : width(w), height(h), pixels(size_t(w) * size_t(h), 0x00FFFFFFu) {}
    uint32_t* Row(int y) { return pixels.data() + size_t(y) * size_t(width); }
};

enum class DeviceKind { Display, Memory, Printer };

struct ColorMatcher;
class PdfWriter;

struct DeviceContext {
    DeviceKind kind = DeviceKind::Display;
    size_t adapter = 0;                 // display and memory DCs: the display they belong to
    uintptr_t window = 0;               // a window's DC: the window it draws into
    std::shared_ptr<Bitmap> windowSurface;
    int icmMode = ICM_OFF;
    std::optional<std::string> profile; // Linux path chosen with SetICMProfileW (memory and printer DCs)
    std::shared_ptr<ColorMatcher> matcher;  // made when ICM first matches a drawing
    HBITMAP bitmap = nullptr;           // memory DCs: the selected bitmap
    HBITMAP stockBitmap = nullptr;
    // Printers.
    printers::Printer printer;
    DEVMODEW devMode{};
    bool inDocument = false;
    bool inPage = false;
    std::wstring documentName;
    std::string documentPath;       // where the document is written
    bool documentIsSpooled = false; // true: documentPath is a temporary file for the printer
    std::shared_ptr<PdfWriter> document;
    std::shared_ptr<Bitmap> pageSurface;
};

// The table's lock; every exported function holds it while it works.
std::unique_lock<std::recursive_mutex> Lock();

HDC AddDeviceContext(std::shared_ptr<DeviceContext> dc);
HBITMAP AddBitmap(std::shared_ptr<Bitmap> bitmap);
// Null, with last error ERROR_INVALID_HANDLE, for a handle that is not one.
DeviceContext* FindDeviceContext(HDC hdc);
Bitmap* FindBitmap(HBITMAP bitmap);
bool RemoveDeviceContext(HDC hdc);
bool RemoveBitmap(HBITMAP bitmap);

// The pixels drawing on `hdc` lands in: a memory DC's bitmap, a printer's
// page, a display's frame buffer. Null when there is none (a printer outside
// a page).
Bitmap* Surface(HDC hdc, DeviceContext& dc);

}  // namespace tesk::gdi
