// CVDeviceContext: a device context of the host's (not owned) that draws
// images through the colour manager's display transform.
#pragma once
#include <windows.h>

#include <cstdint>

#include "device/IVDeviceContext.h"
#include "host/ComponentFramework.h"
#include "module/Export.h"

class TESKCOLORMGR_API CVDeviceContext : public vcom::TUnknownImpl<CVDeviceContext, IVDeviceContext> {
public:
    // With `managed` the manager switches the context to the printer profile
    // now and back when this object goes.
    CVDeviceContext(HDC hdc, bool managed);
    CVDeviceContext(const CVDeviceContext& other);
    CVDeviceContext& operator=(const CVDeviceContext& other);
    ~CVDeviceContext() override;

    bool DrawImage(const CRowIterator* image, const RECT* source, int x, int y, bool colorManaged,
                   bool clampOrigin) override;
    bool DrawImageToPrinter(const CRowIterator* image, int x, int y, int width, int height, int sourceWidth,
                            int sourceHeight) override;
    bool ICMProcessImage(CRowIterator* source, CRowIterator* destination, bool flag) override;
    bool ProcessColors(RGBQUAD* input, RGBQUAD* output, int count) override;

    static const vcom::SInterfaceEntry* InterfaceTable();

    HDC GetHDC() const { return m_hDC; }
    bool IsManaged() const { return m_bManaged; }

private:
    HDC m_hDC = nullptr;
    bool m_bManaged = false;
    uint64_t m_nReserved = 0;
};
