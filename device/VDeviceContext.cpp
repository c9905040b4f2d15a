// Drawing images colour-managed onto a device context, and the display
// transform for images and colour lists handed in by the host.
#include "device/VDeviceContext.h"

#include <algorithm>
#include <cstring>

#include "colormgr/ColorManager.h"
#include "host/imaging/RowIteratorBands.h"

namespace {

constexpr DWORD kSourceCopy = SRCCOPY;

bool IsEmpty(const RECT& rect) { return rect.right <= rect.left || rect.bottom <= rect.top; }

RECT Intersect(const RECT& a, const RECT& b) {
    RECT result{std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
                std::min(a.bottom, b.bottom)};
    if (IsEmpty(result)) result = RECT{0, 0, 0, 0};
    return result;
}

bool HasAlpha(const CRowIterator& image) { return CVPixelFormat::IsAlphaChannelPresent(image.GetPixelFormat()); }

// GDI takes 8-bit pixels only: a 16-bit image is drawn from an 8-bit copy.
// False when the copy cannot be made; `image` is left as it was then.
bool UseEightBitCopy(CRowIterator& image) {
    const EVPixelFormat format = image.GetPixelFormat();
    if (!CVPixelFormat::Is16bit(format)) return true;
    CRowIterator copy;
    if (!CRowIteratorBands::Create(copy, image.GetWidth(), image.GetHeight(), CVPixelFormat::Get8bitFormat(format),
                                   nullptr, nullptr, image.GetResolution()))
        return false;
    if (!RowIterator::CopyRect(copy, image)) return false;
    image = copy;
    return true;
}

}  // namespace

CVDeviceContext::CVDeviceContext(HDC hdc, bool managed) : m_hDC(hdc), m_bManaged(managed), m_nReserved(0) {
    CColorManager* manager = CColorManager::Instance();
    if (manager && m_bManaged) manager->SetupDC(m_hDC);
}

CVDeviceContext::CVDeviceContext(const CVDeviceContext& other)
    : TUnknownImpl(other), m_hDC(other.m_hDC), m_bManaged(other.m_bManaged), m_nReserved(other.m_nReserved) {}

CVDeviceContext& CVDeviceContext::operator=(const CVDeviceContext& other) {
    m_hDC = other.m_hDC;
    m_bManaged = other.m_bManaged;
    m_nReserved = other.m_nReserved;
    return *this;
}

CVDeviceContext::~CVDeviceContext() {
    CColorManager* manager = CColorManager::Instance();
    if (manager && m_hDC && m_bManaged) manager->CleanupDC(m_hDC);
}

const vcom::SInterfaceEntry* CVDeviceContext::InterfaceTable() {
    static const vcom::SInterfaceEntry table[] = {
        {&IID_IVDeviceContext, vcom::kPrimaryInterface},
        {nullptr, 0},
    };
    return table;
}

bool CVDeviceContext::DrawImage(const CRowIterator* pImage, const RECT* source, int x, int y, bool colorManaged,
                                bool clampOrigin) {
    if (!pImage) return true;
    if (HasAlpha(*pImage)) return false;

    const RECT imageRect{0, 0, pImage->GetWidth(), pImage->GetHeight()};
    RECT destination = imageRect;
    int sourceX = 0, sourceY = 0;
    if (source) {
        sourceX = clampOrigin && source->left < 0 ? 0 : source->left;
        sourceY = clampOrigin && source->top < 0 ? 0 : source->top;
        // Clipped to the image's own rectangle, as the host's views expect.
        destination = Intersect(RECT{x, y, x + source->right - source->left, y + source->bottom - source->top},
                                imageRect);
    }
    if (IsEmpty(destination)) return true;
    const RECT sourceRect{sourceX, sourceY, sourceX + (destination.right - destination.left),
                          sourceY + (destination.bottom - destination.top)};

    CRowIterator image = *pImage;  // a handle: shares the pixels
    CColorManager* manager = CColorManager::Instance();
    if (colorManaged && manager && manager->GetMode() != VCM_MODE_OFF && !m_bManaged) {
        if (!UseEightBitCopy(image)) return true;
        ::SetICMMode(m_hDC, ICM_DONE_OUTSIDEDC);
        CRowIterator compatible;
        if (!CRowIteratorBands::CreateCompatible(compatible, image)) return true;
        const CRowIterator& drawn = manager->TransformIterator(image, &compatible, true) ? compatible : image;
        return CRowIteratorBands::DrawImage(drawn, m_hDC, destination, sourceRect, kSourceCopy);
    }

    // The device context does the matching itself, or none is wanted.
    if (!m_bManaged) ::SetICMMode(m_hDC, ICM_DONE_OUTSIDEDC);
    if (!UseEightBitCopy(image)) return true;
    return CRowIteratorBands::DrawImage(image, m_hDC, destination, sourceRect, kSourceCopy);
}

bool CVDeviceContext::DrawImageToPrinter(const CRowIterator* image, int x, int y, int width, int height,
                                         int sourceWidth, int sourceHeight) {
    if (!image) return true;
    if (HasAlpha(*image)) return false;
    return CRowIteratorBands::DrawImage(*image, m_hDC, RECT{x, y, x + width, y + height},
                                        RECT{0, 0, sourceWidth, sourceHeight}, kSourceCopy);
}

bool CVDeviceContext::ICMProcessImage(CRowIterator* source, CRowIterator* destination, bool flag) {
    CColorManager* manager = CColorManager::Instance();
    if (!manager || manager->GetMode() != VCM_MODE_PROFILES || !source) return false;
    return manager->TransformIterator(*source, destination, flag);
}

bool CVDeviceContext::ProcessColors(RGBQUAD* input, RGBQUAD* output, int count) {
    CColorManager* manager = CColorManager::Instance();
    if (manager && manager->GetMode() == VCM_MODE_PROFILES) return manager->ProcessColors(input, output, count);
    if (input && output && count > 0 && input != output) std::memmove(output, input, size_t(count) * sizeof(RGBQUAD));
    return false;
}
