// Print jobs on printer device contexts, device modes and the default printer.
#include <tesk/path.h>
#include <windows.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <unistd.h>
#include <tesk/export_guard.h>

#include "device_mode.h"
#include "gdi_objects.h"
#include "pdf_writer.h"
#include "printers.h"

using namespace tesk;

namespace {

gdi::DeviceContext* PrinterContext(HDC hdc) {
    gdi::DeviceContext* dc = gdi::FindDeviceContext(hdc);
    if (dc && dc->kind != gdi::DeviceKind::Printer) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    return dc;
}

std::string TemporaryDocumentPath() {
    const char* folder = std::getenv("TMPDIR");
    std::string pattern = std::string(folder && *folder ? folder : "/tmp") + "/tesk-print-XXXXXX";
    int fd = mkstemp(pattern.data());
    if (fd < 0) return "";
    close(fd);
    return pattern;
}

void EndDocumentState(gdi::DeviceContext& dc) {
    dc.inDocument = dc.inPage = false;
    dc.pageSurface.reset();
    dc.document.reset();
    if (dc.documentIsSpooled && !dc.documentPath.empty()) std::remove(dc.documentPath.c_str());
    dc.documentPath.clear();
    dc.documentIsSpooled = false;
}

bool FinishPage(gdi::DeviceContext& dc) {
    gdi::PageGeometry page = gdi::PageOf(dc.devMode);
    bool ok = dc.document->AddPage(dc.pageSurface->width, dc.pageSurface->height, page.dpi, dc.pageSurface->pixels);
    dc.pageSurface.reset();
    dc.inPage = false;
    if (!ok) SetLastError(ERROR_WRITE_FAULT);
    return ok;
}

}  // namespace

int WINAPI StartDocW(HDC hdc, const DOCINFOW* lpdi) try {
    static std::atomic<int> nextJob{1};
    auto lock = gdi::Lock();
    gdi::DeviceContext* dc = PrinterContext(hdc);
    if (!dc) return SP_ERROR;
    if (!lpdi || dc->inDocument) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return SP_ERROR;
    }
    dc->documentName = lpdi->lpszDocName ? lpdi->lpszDocName : L"";
    if (lpdi->lpszOutput && *lpdi->lpszOutput) {
        dc->documentPath = path::ToNative(lpdi->lpszOutput);
    } else {
        dc->documentPath = TemporaryDocumentPath();
        dc->documentIsSpooled = true;
    }
    dc->document = std::make_shared<gdi::PdfWriter>();
    if (dc->documentPath.empty() || !dc->document->Open(dc->documentPath)) {
        EndDocumentState(*dc);
        SetLastError(ERROR_WRITE_FAULT);
        return SP_ERROR;
    }
    dc->inDocument = true;
    return nextJob++;
} catch (...) {
    return tesk::FailAtBoundary(SP_ERROR);
}

int WINAPI StartPage(HDC hdc) try {
    auto lock = gdi::Lock();
    gdi::DeviceContext* dc = PrinterContext(hdc);
    if (!dc) return SP_ERROR;
    if (!dc->inDocument || dc->inPage) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return SP_ERROR;
    }
    gdi::PageGeometry page = gdi::PageOf(dc->devMode);
    dc->pageSurface = std::make_shared<gdi::Bitmap>(page.width, page.height);
    dc->inPage = true;
    return 1;
} catch (...) {
    return tesk::FailAtBoundary(SP_ERROR);
}

int WINAPI EndPage(HDC hdc) try {
    auto lock = gdi::Lock();
    gdi::DeviceContext* dc = PrinterContext(hdc);
    if (!dc) return SP_ERROR;
    if (!dc->inPage) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return SP_ERROR;
    }
    return FinishPage(*dc) ? 1 : SP_ERROR;
} catch (...) {
    return tesk::FailAtBoundary(SP_ERROR);
}

int WINAPI EndDoc(HDC hdc) try {
    auto lock = gdi::Lock();
    gdi::DeviceContext* dc = PrinterContext(hdc);
    if (!dc) return SP_ERROR;
    if (!dc->inDocument) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return SP_ERROR;
    }
    bool ok = !dc->inPage || FinishPage(*dc);
    ok = dc->document->Finish(path::Utf8(dc->documentName)) && ok;
    if (!ok) SetLastError(ERROR_WRITE_FAULT);
    if (ok && dc->documentIsSpooled) ok = printers::Submit(dc->printer, dc->documentPath, dc->documentName, dc->devMode.dmCopies);
    EndDocumentState(*dc);
    return ok ? 1 : SP_ERROR;
} catch (...) {
    return tesk::FailAtBoundary(SP_ERROR);
}

int WINAPI AbortDoc(HDC hdc) try {
    auto lock = gdi::Lock();
    gdi::DeviceContext* dc = PrinterContext(hdc);
    if (!dc) return SP_ERROR;
    if (!dc->inDocument) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return SP_ERROR;
    }
    dc->document->Abandon();
    if (!dc->documentIsSpooled) std::remove(dc->documentPath.c_str());
    EndDocumentState(*dc);
    return 1;
} catch (...) {
    return tesk::FailAtBoundary(SP_ERROR);
}

// Printers are named, not opened: hPrinter is not used. No dialog is shown;
// DM_IN_PROMPT is taken as a request for the current settings.
LONG WINAPI DocumentPropertiesW(HWND hWnd, HANDLE hPrinter, LPWSTR pDeviceName, PDEVMODEW pDevModeOutput,
                                PDEVMODEW pDevModeInput, DWORD fMode) try {
    (void)hWnd;
    (void)hPrinter;
    std::optional<printers::Printer> printer = printers::Find(pDeviceName);
    if (!printer) {
        SetLastError(ERROR_INVALID_PRINTER_NAME);
        return -1;
    }
    if (fMode == 0) return LONG(sizeof(DEVMODEW));
    DEVMODEW mode = gdi::DefaultDeviceMode(*printer);
    if (fMode & DM_IN_BUFFER && pDevModeInput) gdi::MergeDeviceMode(mode, *pDevModeInput);
    if (fMode & DM_OUT_BUFFER) {
        if (!pDevModeOutput) {
            SetLastError(ERROR_INVALID_PARAMETER);
            return -1;
        }
        *pDevModeOutput = mode;
    }
    return IDOK;
} catch (...) {
    return tesk::FailAtBoundary(LONG{-1});
}

BOOL WINAPI GetDefaultPrinterW(LPWSTR pszBuffer, LPDWORD pcchBuffer) try {
    if (!pcchBuffer) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    std::wstring name = printers::DefaultName();
    if (name.empty()) {
        SetLastError(ERROR_FILE_NOT_FOUND);
        return FALSE;
    }
    DWORD needed = DWORD(name.size() + 1);
    if (!pszBuffer || *pcchBuffer < needed) {
        *pcchBuffer = needed;
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return FALSE;
    }
    std::wmemcpy(pszBuffer, name.c_str(), needed);
    *pcchBuffer = needed;
    return TRUE;
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}

BOOL WINAPI SetDefaultPrinterW(LPCWSTR pszPrinter) try {
    if (!pszPrinter || !*pszPrinter) {
        SetLastError(ERROR_INVALID_PRINTER_NAME);
        return FALSE;
    }
    return printers::SetDefaultName(pszPrinter) ? TRUE : FALSE;
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}

BOOL WINAPI TeskQueryDefaultPrinterDevice(LPWSTR buffer, DWORD size) try {
    std::optional<printers::Printer> printer = printers::Find(printers::DefaultName().c_str());
    if (!buffer || !printer) return FALSE;
    std::wstring device = printer->name + L"," + printer->driver + L"," + printer->port;
    if (device.size() + 1 > size) return FALSE;
    std::wmemcpy(buffer, device.c_str(), device.size() + 1);
    return TRUE;
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}
