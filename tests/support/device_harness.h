// Shared pieces of the device-context tests: a memory device context to draw
// on, images with known pixels, the display transform's own answer, and a log
// of what reached GDI32's StretchDIBits.
#pragma once
#include <windows.h>

#include <vector>

#include "host/imaging/RowIteratorBands.h"
#include "support/manager_harness.h"

namespace device_test {

// A memory device context with a bitmap of its own selected.
class MemoryDC {
public:
    MemoryDC(int width, int height);
    ~MemoryDC();
    MemoryDC(const MemoryDC&) = delete;
    MemoryDC& operator=(const MemoryDC&) = delete;
    HDC Get() const { return m_dc; }
    COLORREF Pixel(int x, int y) const { return ::GetPixel(m_dc, x, y); }

private:
    HDC m_dc = nullptr;
    HBITMAP m_bitmap = nullptr;
    HGDIOBJ m_previous = nullptr;
};

// An 8-bit RGB image whose pixel (x, y) is Colour(x, y).
CRowIterator PatternRGB(int width, int height);
COLORREF Colour(int x, int y);
// Pixel (x, y) of an 8-bit RGB image as a COLORREF.
COLORREF PixelOf(const CRowIterator& image, int x, int y);
// The manager's display transform of an 8-bit image, into a new image.
CRowIterator DisplayTransformOf(CColorManager& manager, const CRowIterator& image);

// One StretchDIBits call as the substitute saw it.
struct SStretchCall {
    RECT destination;  // left, top, width, height as passed
    RECT source;       // x, y, width, height as passed
    int bitCount;
    DWORD rop;
};
// Stands a recording StretchDIBits in for GDI32.DLL's (forwarding to it).
void RecordStretchDIBits();
std::vector<SStretchCall>& StretchCalls();

// A started manager in mode 1 whose monitor profile is a gamma-1.8 display
// profile, so that the display transform visibly moves mid-tones.
class DeviceTest : public colormgr_test::ManagerTest {
protected:
    void SetUp() override;
    CColorManager& Manager() { return *manager_; }
    CColorManager* manager_ = nullptr;
};

}  // namespace device_test
