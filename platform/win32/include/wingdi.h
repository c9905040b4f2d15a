// GDI types and the GDI32.DLL functions of the Win32 subset (provided by the
// platform module gdi32.so).
#pragma once
#include "windef.h"

typedef struct tagRGBQUAD {
    BYTE rgbBlue;
    BYTE rgbGreen;
    BYTE rgbRed;
    BYTE rgbReserved;
} RGBQUAD, *LPRGBQUAD;

typedef struct tagRGBTRIPLE {
    BYTE rgbtBlue;
    BYTE rgbtGreen;
    BYTE rgbtRed;
} RGBTRIPLE, *PRGBTRIPLE, *LPRGBTRIPLE;

#pragma pack(push, 2)
typedef struct tagBITMAPFILEHEADER {
    WORD bfType;
    DWORD bfSize;
    WORD bfReserved1;
    WORD bfReserved2;
    DWORD bfOffBits;
} BITMAPFILEHEADER;
#pragma pack(pop)

typedef struct tagBITMAPINFOHEADER {
    DWORD biSize;
    LONG biWidth;
    LONG biHeight;
    WORD biPlanes;
    WORD biBitCount;
    DWORD biCompression;
    DWORD biSizeImage;
    LONG biXPelsPerMeter;
    LONG biYPelsPerMeter;
    DWORD biClrUsed;
    DWORD biClrImportant;
} BITMAPINFOHEADER, *PBITMAPINFOHEADER, *LPBITMAPINFOHEADER;

typedef struct tagBITMAPINFO {
    BITMAPINFOHEADER bmiHeader;
    RGBQUAD bmiColors[1];
} BITMAPINFO, *PBITMAPINFO, *LPBITMAPINFO;

#define BI_RGB 0L
#define BI_BITFIELDS 3L
#define DIB_RGB_COLORS 0
#define DIB_PAL_COLORS 1
#define SRCCOPY 0x00CC0020u
#define BLACKNESS 0x00000042u
#define WHITENESS 0x00FF0062u

#define RGB(r, g, b) ((COLORREF)(((BYTE)(r) | ((WORD)((BYTE)(g)) << 8)) | (((DWORD)(BYTE)(b)) << 16)))
#define GetRValue(rgb) (LOBYTE(rgb))
#define GetGValue(rgb) (LOBYTE(((WORD)(rgb)) >> 8))
#define GetBValue(rgb) (LOBYTE((rgb) >> 16))

// Colour spaces.
typedef LONG FXPT16DOT16, *LPFXPT16DOT16;
typedef LONG FXPT2DOT30, *LPFXPT2DOT30;
typedef LONG LCSCSTYPE;
typedef LONG LCSGAMUTMATCH;

typedef struct tagCIEXYZ {
    FXPT2DOT30 ciexyzX;
    FXPT2DOT30 ciexyzY;
    FXPT2DOT30 ciexyzZ;
} CIEXYZ, *LPCIEXYZ;

typedef struct tagCIEXYZTRIPLE {
    CIEXYZ ciexyzRed;
    CIEXYZ ciexyzGreen;
    CIEXYZ ciexyzBlue;
} CIEXYZTRIPLE, *LPCIEXYZTRIPLE;

typedef struct tagLOGCOLORSPACEW {
    DWORD lcsSignature;
    DWORD lcsVersion;
    DWORD lcsSize;
    LCSCSTYPE lcsCSType;
    LCSGAMUTMATCH lcsIntent;
    CIEXYZTRIPLE lcsEndpoints;
    DWORD lcsGammaRed;
    DWORD lcsGammaGreen;
    DWORD lcsGammaBlue;
    WCHAR lcsFilename[MAX_PATH];
} LOGCOLORSPACEW, *LPLOGCOLORSPACEW;

#define LCS_SIGNATURE 0x50534F43 /* 'PSOC' */
#define LCS_CALIBRATED_RGB 0x00000000L
#define LCS_sRGB 0x73524742 /* 'sRGB' */
#define LCS_WINDOWS_COLOR_SPACE 0x57696E20 /* 'Win ' */
#define PROFILE_LINKED 0x4C494E4B /* 'LINK' */
#define PROFILE_EMBEDDED 0x4D424544 /* 'MBED' */
#define LCS_GM_BUSINESS 0x00000001L
#define LCS_GM_GRAPHICS 0x00000002L
#define LCS_GM_IMAGES 0x00000004L
#define LCS_GM_ABS_COLORIMETRIC 0x00000008L

#define ICM_OFF 1
#define ICM_ON 2
#define ICM_QUERY 3
#define ICM_DONE_OUTSIDEDC 4

// Device capabilities (GetDeviceCaps).
#define HORZSIZE 4
#define VERTSIZE 6
#define HORZRES 8
#define VERTRES 10
#define BITSPIXEL 12
#define PLANES 14
#define NUMCOLORS 24
#define RASTERCAPS 38
#define RC_BITBLT 0x0001
#define RC_DIBTODEV 0x0200
#define RC_STRETCHBLT 0x0800
#define RC_STRETCHDIB 0x2000
#define PHYSICALWIDTH 110
#define PHYSICALHEIGHT 111
#define PHYSICALOFFSETX 112
#define PHYSICALOFFSETY 113
#define LOGPIXELSX 88
#define LOGPIXELSY 90
#define COLORMGMTCAPS 121
#define CM_NONE 0x00000000
#define CM_DEVICE_ICM 0x00000001
#define CM_GAMMA_RAMP 0x00000002
#define CM_CMYK_COLOR 0x00000004
#define TECHNOLOGY 2
#define DT_RASDISPLAY 1
#define DT_RASPRINTER 2

#define CCHDEVICENAME 32
#define CCHFORMNAME 32

typedef struct _devicemodeW {
    WCHAR dmDeviceName[CCHDEVICENAME];
    WORD dmSpecVersion;
    WORD dmDriverVersion;
    WORD dmSize;
    WORD dmDriverExtra;
    DWORD dmFields;
    SHORT dmOrientation;
    SHORT dmPaperSize;
    SHORT dmPaperLength;
    SHORT dmPaperWidth;
    SHORT dmScale;
    SHORT dmCopies;
    SHORT dmDefaultSource;
    SHORT dmPrintQuality;
    SHORT dmColor;
    SHORT dmDuplex;
    SHORT dmYResolution;
    SHORT dmTTOption;
    SHORT dmCollate;
    WCHAR dmFormName[CCHFORMNAME];
    WORD dmLogPixels;
    DWORD dmBitsPerPel;
    DWORD dmPelsWidth;
    DWORD dmPelsHeight;
    DWORD dmDisplayFlags;
    DWORD dmDisplayFrequency;
    DWORD dmICMMethod;
    DWORD dmICMIntent;
    DWORD dmMediaType;
    DWORD dmDitherType;
    DWORD dmReserved1;
    DWORD dmReserved2;
    DWORD dmPanningWidth;
    DWORD dmPanningHeight;
} DEVMODEW, *PDEVMODEW, *LPDEVMODEW;

#define DM_SPECVERSION 0x0401
#define DM_ORIENTATION 0x00000001L
#define DM_PAPERSIZE 0x00000002L
#define DM_COPIES 0x00000100L
#define DM_PRINTQUALITY 0x00000400L
#define DM_COLOR 0x00000800L
#define DM_YRESOLUTION 0x00002000L
#define DMORIENT_PORTRAIT 1
#define DMORIENT_LANDSCAPE 2
#define DMPAPER_LETTER 1
#define DMPAPER_A4 9
#define DMCOLOR_MONOCHROME 1
#define DMCOLOR_COLOR 2
#define DMICM_SATURATE 1
#define DMICM_CONTRAST 2
#define DMICM_COLORIMETRIC 3
#define DMICM_ABS_COLORIMETRIC 4
#define DM_ICMMETHOD 0x00800000L
#define DM_ICMINTENT 0x01000000L
#define DMICMMETHOD_NONE 1
#define DMICMMETHOD_SYSTEM 2
#define DMICMMETHOD_DRIVER 3
#define DMICMMETHOD_DEVICE 4

typedef struct _DISPLAY_DEVICEW {
    DWORD cb;
    WCHAR DeviceName[32];
    WCHAR DeviceString[128];
    DWORD StateFlags;
    WCHAR DeviceID[128];
    WCHAR DeviceKey[128];
} DISPLAY_DEVICEW, *PDISPLAY_DEVICEW, *LPDISPLAY_DEVICEW;

#define DISPLAY_DEVICE_ATTACHED_TO_DESKTOP 0x00000001
#define DISPLAY_DEVICE_MULTI_DRIVER 0x00000002
#define DISPLAY_DEVICE_PRIMARY_DEVICE 0x00000004
#define DISPLAY_DEVICE_MIRRORING_DRIVER 0x00000008
#define DISPLAY_DEVICE_VGA_COMPATIBLE 0x00000010
#define DISPLAY_DEVICE_ACTIVE 0x00000001
#define DISPLAY_DEVICE_ATTACHED 0x00000002

typedef struct _DOCINFOW {
    int cbSize;
    LPCWSTR lpszDocName;
    LPCWSTR lpszOutput;
    LPCWSTR lpszDatatype;
    DWORD fwType;
} DOCINFOW, *LPDOCINFOW;

typedef int(CALLBACK* ICMENUMPROCW)(LPWSTR, LPARAM);

// Device contexts: "DISPLAY" or a display device name, a printer name, or a
// memory context from CreateCompatibleDC.
TESK_WIN32_API HDC WINAPI CreateDCW(LPCWSTR pwszDriver, LPCWSTR pwszDevice, LPCWSTR pszPort, const DEVMODEW* pdm);
TESK_WIN32_API HDC WINAPI CreateCompatibleDC(HDC hdc);
TESK_WIN32_API BOOL WINAPI DeleteDC(HDC hdc);
TESK_WIN32_API int WINAPI GetDeviceCaps(HDC hdc, int index);

// Gamma ramps: three arrays of 256 WORDs (red, green, blue).
TESK_WIN32_API BOOL WINAPI GetDeviceGammaRamp(HDC hdc, LPVOID lpRamp);
TESK_WIN32_API BOOL WINAPI SetDeviceGammaRamp(HDC hdc, LPVOID lpRamp);

// Linux only: how this process may use the display. Meant to be called
// before any display call: it replaces the display chosen so far. FALSE with
// ERROR_INVALID_PARAMETER for another value.
#define TESK_DISPLAY_SYSTEM 0     // the X server DISPLAY names, else a display held in memory (the default)
#define TESK_DISPLAY_SERVER 1     // the X server only: without one there is no display
#define TESK_DISPLAY_READ_ONLY 2  // read as SYSTEM; ramps and profiles set stay in this process, nothing is drawn
#define TESK_DISPLAY_IN_MEMORY 3  // a display held in memory, whatever DISPLAY says
TESK_WIN32_API BOOL WINAPI TeskSetDisplayAccess(DWORD access);

// ICM on a device context. Sizes of wide text count characters here, as on Windows.
TESK_WIN32_API BOOL WINAPI GetICMProfileW(HDC hdc, LPDWORD pBufSize, LPWSTR pszFilename);
TESK_WIN32_API BOOL WINAPI SetICMProfileW(HDC hdc, LPWSTR lpFileName);
TESK_WIN32_API int WINAPI SetICMMode(HDC hdc, int mode);
TESK_WIN32_API int WINAPI EnumICMProfilesW(HDC hdc, ICMENUMPROCW proc, LPARAM param);

// Drawing and documents.
TESK_WIN32_API HBITMAP WINAPI CreateCompatibleBitmap(HDC hdc, int cx, int cy);
TESK_WIN32_API HGDIOBJ WINAPI SelectObject(HDC hdc, HGDIOBJ h);
TESK_WIN32_API BOOL WINAPI DeleteObject(HGDIOBJ ho);
TESK_WIN32_API BOOL WINAPI BitBlt(HDC hdc, int x, int y, int cx, int cy, HDC hdcSrc, int x1, int y1, DWORD rop);
TESK_WIN32_API int WINAPI SetDIBitsToDevice(HDC hdc, int xDest, int yDest, DWORD w, DWORD h, int xSrc, int ySrc,
                                            UINT StartScan, UINT cLines, const void* lpvBits,
                                            const BITMAPINFO* lpbmi, UINT ColorUse);
TESK_WIN32_API int WINAPI StretchDIBits(HDC hdc, int xDest, int yDest, int DestWidth, int DestHeight, int xSrc,
                                        int ySrc, int SrcWidth, int SrcHeight, const void* lpBits,
                                        const BITMAPINFO* lpbmi, UINT iUsage, DWORD rop);
TESK_WIN32_API COLORREF WINAPI GetPixel(HDC hdc, int x, int y);
#define CLR_INVALID 0xFFFFFFFFu
// Reads rows of a bitmap (not selected into a DC other than `hdc`) as a 24-
// or 32-bit DIB; a negative biHeight asks for top-down rows.
TESK_WIN32_API int WINAPI GetDIBits(HDC hdc, HBITMAP hbm, UINT start, UINT cLines, LPVOID lpvBits,
                                    LPBITMAPINFO lpbmi, UINT usage);
#define SP_ERROR (-1)
// Printer DCs: each page is rendered at the device mode's resolution and the
// document goes to the printer (or to lpszOutput) as a PDF of raster pages.
TESK_WIN32_API int WINAPI StartDocW(HDC hdc, const DOCINFOW* lpdi);
TESK_WIN32_API int WINAPI EndDoc(HDC hdc);
TESK_WIN32_API int WINAPI StartPage(HDC hdc);
TESK_WIN32_API int WINAPI EndPage(HDC hdc);
TESK_WIN32_API int WINAPI AbortDoc(HDC hdc);
