#include "support/device_harness.h"

#include <tesk/loader.h>

#include <cstring>

namespace device_test {

MemoryDC::MemoryDC(int width, int height) {
    m_dc = ::CreateCompatibleDC(nullptr);
    m_bitmap = ::CreateCompatibleBitmap(m_dc, width, height);
    m_previous = ::SelectObject(m_dc, m_bitmap);
}

MemoryDC::~MemoryDC() {
    ::SelectObject(m_dc, m_previous);
    ::DeleteObject(m_bitmap);
    ::DeleteDC(m_dc);
}

COLORREF Colour(int x, int y) { return RGB(40 + 50 * x, 90 + 30 * y, 200 - 20 * x - 10 * y); }

CRowIterator PatternRGB(int width, int height) {
    CRowIterator image;
    CRowIteratorBands::CreateRGB(image, width, height);
    for (int y = 0; y < height; ++y) {
        BYTE* row = image.GetRow(y);
        for (int x = 0; x < width; ++x) {
            const COLORREF c = Colour(x, y);
            row[x * 3] = GetBValue(c), row[x * 3 + 1] = GetGValue(c), row[x * 3 + 2] = GetRValue(c);
        }
    }
    return image;
}

COLORREF PixelOf(const CRowIterator& image, int x, int y) {
    const BYTE* p = image.GetRow(y, x);
    return RGB(p[2], p[1], p[0]);
}

CRowIterator DisplayTransformOf(CColorManager& manager, const CRowIterator& image) {
    CRowIterator source = image, result;
    CRowIteratorBands::CreateCompatible(result, image);
    EXPECT_TRUE(manager.TransformIterator(source, &result, true));
    return result;
}

namespace {

using StretchFn = int(WINAPI*)(HDC, int, int, int, int, int, int, int, int, const void*, const BITMAPINFO*, UINT,
                               DWORD);

int WINAPI RecordingStretch(HDC dc, int x, int y, int width, int height, int sx, int sy, int sw, int sh,
                            const void* bits, const BITMAPINFO* info, UINT usage, DWORD rop) {
    StretchCalls().push_back(
        {RECT{x, y, width, height}, RECT{sx, sy, sw, sh}, info ? int(info->bmiHeader.biBitCount) : 0, rop});
    auto real = reinterpret_cast<StretchFn>(
        reinterpret_cast<void*>(tesk::loader::RealProcAddress(L"GDI32.DLL", "StretchDIBits")));
    return real(dc, x, y, width, height, sx, sy, sw, sh, bits, info, usage, rop);
}

}  // namespace

std::vector<SStretchCall>& StretchCalls() {
    static std::vector<SStretchCall> calls;
    return calls;
}

void RecordStretchDIBits() {
    StretchCalls().clear();
    tesk::loader::Substitute gdi;
    gdi.overrides["StretchDIBits"] = reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&RecordingStretch));
    tesk::loader::SetSubstitute(L"GDI32.DLL", gdi);
}

void DeviceTest::SetUp() {
    ManagerTest::SetUp();
    colormgr_test::WriteRgbProfile(ColorDir() + "/Monitor.icc", 1.8);
    manager_ = CColorManager::Instance();
    ASSERT_NE(manager_, nullptr);
    ASSERT_TRUE(manager_->IsLoaded());
    CString monitor(L"Monitor.icc");
    manager_->SetMonitorProfile(monitor);
    ASSERT_EQ(manager_->GetMode(), VCM_MODE_PROFILES);
}

}  // namespace device_test
