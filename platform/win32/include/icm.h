// Image Colour Management: types and the MSCMS.DLL / ICMUI.DLL functions
// (provided by the platform modules mscms.so and icmui.so).
#pragma once
#include "wingdi.h"
#include "winuser.h"

typedef HANDLE HPROFILE;
typedef HPROFILE* PHPROFILE;
typedef HANDLE HTRANSFORM;
typedef DWORD TAGTYPE, *PTAGTYPE, *LPTAGTYPE;

#define PROFILE_FILENAME 1
#define PROFILE_MEMBUFFER 2
#define PROFILE_READ 1
#define PROFILE_READWRITE 2
#define FILE_SHARE_READ 0x00000001
#define FILE_SHARE_WRITE 0x00000002
#define CREATE_NEW 1
#define CREATE_ALWAYS 2
#define OPEN_EXISTING 3
#define OPEN_ALWAYS 4
#define TRUNCATE_EXISTING 5

#define INDEX_DONT_CARE 0
#define CMM_FROM_PROFILE INDEX_DONT_CARE
#define CMM_WINDOWS_DEFAULT 0x57696E20 /* 'Win ' */

// Transform flags.
#define PROOF_MODE 0x00000001
#define NORMAL_MODE 0x00000002
#define BEST_MODE 0x00000003
#define ENABLE_GAMUT_CHECKING 0x00010000
#define USE_RELATIVE_COLORIMETRIC 0x00020000
#define FAST_TRANSLATE 0x00040000
// Ours, not Windows': black-point compensation on every step of the chain
// (lcms2's), for hosts that ask; Windows' own calls never pass it.
#define TESK_BLACK_POINT_COMPENSATION 0x40000000

// Rendering intents.
#define INTENT_PERCEPTUAL 0
#define INTENT_RELATIVE_COLORIMETRIC 1
#define INTENT_SATURATION 2
#define INTENT_ABSOLUTE_COLORIMETRIC 3

// Standard colour-space profile identifiers.
#define SPACE_RGB 0x52474220 /* 'RGB ' */
#define SPACE_CMYK 0x434D594B /* 'CMYK' */

// GetCMMInfo.
#define CMM_WIN_VERSION 0
#define CMM_IDENT 1
#define CMM_DRIVER_VERSION 2
#define CMM_DLL_VERSION 3
#define CMM_VERSION 4
#define CMM_DESCRIPTION 5
#define CMM_LOGOICON 6

#define MAX_COLOR_CHANNELS 8

// EnumColorProfiles: which ENUMTYPE fields select profiles.
#define ENUM_TYPE_VERSION 0x0300
#define ET_DEVICENAME 0x00000001
#define ET_MEDIATYPE 0x00000002
#define ET_DITHERMODE 0x00000004
#define ET_RESOLUTION 0x00000008
#define ET_CMMTYPE 0x00000010
#define ET_CLASS 0x00000020
#define ET_DATACOLORSPACE 0x00000040
#define ET_CONNECTIONSPACE 0x00000080
#define ET_SIGNATURE 0x00000100
#define ET_PLATFORM 0x00000200
#define ET_PROFILEFLAGS 0x00000400
#define ET_MANUFACTURER 0x00000800
#define ET_MODEL 0x00001000
#define ET_ATTRIBUTES 0x00002000
#define ET_RENDERINGINTENT 0x00004000
#define ET_CREATOR 0x00008000
#define ET_DEVICECLASS 0x00010000

#define TESK_ENUMTYPE_FIELDS(TEXT)                                                                       \
    DWORD dwSize;                                                                                        \
    DWORD dwVersion;                                                                                     \
    DWORD dwFields;                                                                                      \
    TEXT pDeviceName;                                                                                    \
    DWORD dwMediaType;                                                                                   \
    DWORD dwDitheringMode;                                                                               \
    DWORD dwResolution[2];                                                                               \
    DWORD dwCMMType;                                                                                     \
    DWORD dwClass;                                                                                       \
    DWORD dwDataColorSpace;                                                                              \
    DWORD dwConnectionSpace;                                                                             \
    DWORD dwSignature;                                                                                   \
    DWORD dwPlatform;                                                                                    \
    DWORD dwProfileFlags;                                                                                \
    DWORD dwManufacturer;                                                                                \
    DWORD dwModel;                                                                                       \
    DWORD dwAttributes[2];                                                                               \
    DWORD dwRenderingIntent;                                                                             \
    DWORD dwCreator;                                                                                     \
    DWORD dwDeviceClass;
typedef struct tagENUMTYPEW { TESK_ENUMTYPE_FIELDS(PCWSTR) } ENUMTYPEW, *PENUMTYPEW, *LPENUMTYPEW;
typedef struct tagENUMTYPEA { TESK_ENUMTYPE_FIELDS(PCSTR) } ENUMTYPEA, *PENUMTYPEA, *LPENUMTYPEA;
#undef TESK_ENUMTYPE_FIELDS

typedef struct tagPROFILEHEADER {
    DWORD phSize;
    DWORD phCMMType;
    DWORD phVersion;
    DWORD phClass;
    DWORD phDataColorSpace;
    DWORD phConnectionSpace;
    DWORD phDateTime[3];
    DWORD phSignature;
    DWORD phPlatform;
    DWORD phProfileFlags;
    DWORD phManufacturer;
    DWORD phModel;
    DWORD phAttributes[2];
    DWORD phRenderingIntent;
    CIEXYZ phIlluminant;
    DWORD phCreator;
    BYTE phReserved[44];
} PROFILEHEADER, *PPROFILEHEADER, *LPPROFILEHEADER;

typedef struct tagPROFILE {
    DWORD dwType;
    PVOID pProfileData;
    DWORD cbDataSize;
} PROFILE, *PPROFILE, *LPPROFILE;

// Profile classes and colour spaces as they appear in PROFILEHEADER.
#define CLASS_MONITOR 0x6D6E7472 /* 'mntr' */
#define CLASS_PRINTER 0x70727472 /* 'prtr' */
#define CLASS_SCANNER 0x73636E72 /* 'scnr' */
#define CLASS_LINK 0x6C696E6B /* 'link' */
#define CLASS_ABSTRACT 0x61627374 /* 'abst' */
#define CLASS_COLORSPACE 0x73706163 /* 'spac' */
#define CLASS_NAMED 0x6E6D636C /* 'nmcl' */
#define SPACE_XYZ 0x58595A20 /* 'XYZ ' */
#define SPACE_Lab 0x4C616220 /* 'Lab ' */
#define SPACE_GRAY 0x47524159 /* 'GRAY' */

typedef struct tagGRAYCOLOR { WORD gray; } GRAYCOLOR;
typedef struct tagRGBCOLOR { WORD red; WORD green; WORD blue; } RGBCOLOR;
typedef struct tagCMYKCOLOR { WORD cyan; WORD magenta; WORD yellow; WORD black; } CMYKCOLOR;
typedef struct tagXYZCOLOR { WORD X; WORD Y; WORD Z; } XYZCOLOR;
typedef struct tagYxyCOLOR { WORD Y; WORD x; WORD y; } YxyCOLOR;
typedef struct tagLabCOLOR { WORD L; WORD a; WORD b; } LabCOLOR;
typedef struct tagGENERIC3CHANNEL { WORD ch1; WORD ch2; WORD ch3; } GENERIC3CHANNEL;
typedef struct tagNAMEDCOLOR { DWORD dwIndex; } NAMEDCOLOR;
typedef struct tagHiFiCOLOR { BYTE channel[MAX_COLOR_CHANNELS]; } HiFiCOLOR;

typedef union tagCOLOR {
    GRAYCOLOR gray;
    RGBCOLOR rgb;
    CMYKCOLOR cmyk;
    XYZCOLOR XYZ;
    YxyCOLOR Yxy;
    LabCOLOR Lab;
    GENERIC3CHANNEL gen3ch;
    NAMEDCOLOR named;
    HiFiCOLOR hifi;
    struct {
        DWORD reserved1;
        VOID* reserved2;
    };
} COLOR, *PCOLOR, *LPCOLOR;

typedef enum {
    COLOR_GRAY = 1,
    COLOR_RGB,
    COLOR_XYZ,
    COLOR_Yxy,
    COLOR_Lab,
    COLOR_3_CHANNEL,
    COLOR_CMYK,
    COLOR_5_CHANNEL,
    COLOR_6_CHANNEL,
    COLOR_7_CHANNEL,
    COLOR_8_CHANNEL,
    COLOR_NAMED,
} COLORTYPE, *PCOLORTYPE, *LPCOLORTYPE;

// A format's name lists its channels from most to least significant in a
// little-endian unit: BM_RGBTRIPLETS is B,G,R in memory.
typedef enum {
    BM_x555RGB = 0x0000,
    BM_x555XYZ = 0x0101,
    BM_x555Yxy,
    BM_x555Lab,
    BM_x555G3CH,
    BM_RGBTRIPLETS = 0x0002,
    BM_BGRTRIPLETS = 0x0004,
    BM_XYZTRIPLETS = 0x0201,
    BM_YxyTRIPLETS,
    BM_LabTRIPLETS,
    BM_G3CHTRIPLETS,
    BM_5CHANNEL,
    BM_6CHANNEL,
    BM_7CHANNEL,
    BM_8CHANNEL,
    BM_GRAY,
    BM_xRGBQUADS = 0x0008,
    BM_xBGRQUADS = 0x0010,
    BM_xG3CHQUADS = 0x0304,
    BM_KYMCQUADS,
    BM_CMYKQUADS = 0x0020,
    BM_10b_RGB = 0x0009,
    BM_10b_XYZ = 0x0401,
    BM_10b_Yxy,
    BM_10b_Lab,
    BM_10b_G3CH,
    BM_NAMED_INDEX,
    BM_16b_RGB = 0x000A,
    BM_16b_XYZ = 0x0501,
    BM_16b_Yxy,
    BM_16b_Lab,
    BM_16b_G3CH,
    BM_16b_GRAY,
    BM_565RGB = 0x0001,
} BMFORMAT, *PBMFORMAT, *LPBMFORMAT;

typedef BOOL(WINAPI* PBMCALLBACKFN)(ULONG, ULONG, LPARAM);
typedef PBMCALLBACKFN LPBMCALLBACKFN;

// Colour-matching dialog.
typedef BOOL(WINAPI* PCMSCALLBACKW)(struct _tagCOLORMATCHSETUPW*, LPARAM);

typedef struct _tagCOLORMATCHSETUPW {
    DWORD dwSize;
    DWORD dwVersion;
    DWORD dwFlags;
    HWND hwndOwner;
    PCWSTR pSourceName;
    PCWSTR pDisplayName;
    PCWSTR pPrinterName;
    DWORD dwRenderIntent;
    DWORD dwProofingIntent;
    PWSTR pMonitorProfile;
    DWORD ccMonitorProfile;
    PWSTR pPrinterProfile;
    DWORD ccPrinterProfile;
    PWSTR pTargetProfile;
    DWORD ccTargetProfile;
    DLGPROC lpfnHook;
    LPARAM lParam;
    PCMSCALLBACKW lpfnApplyCallback;
    LPARAM lParamApplyCallback;
} COLORMATCHSETUPW, *PCOLORMATCHSETUPW, *LPCOLORMATCHSETUPW;

#define COLOR_MATCH_VERSION 0x0200
#define CMS_DISABLEICM 1
#define CMS_ENABLEPROOFING 2
#define CMS_SETRENDERINTENT 4
#define CMS_SETPROOFINTENT 8
#define CMS_SETMONITORPROFILE 0x10
#define CMS_SETPRINTERPROFILE 0x20
#define CMS_SETTARGETPROFILE 0x40
#define CMS_USEHOOK 0x80
#define CMS_USEAPPLYCALLBACK 0x100
#define CMS_USEDESCRIPTION 0x200
#define CMS_DISABLEINTENT 0x400
#define CMS_DISABLERENDERINTENT 0x800
#define CMS_MONITOROVERFLOW 0x80000000L
#define CMS_PRINTEROVERFLOW 0x40000000L
#define CMS_TARGETOVERFLOW 0x20000000L

// MSCMS.DLL. A size in bytes of wide text counts bytes of this platform's
// WCHAR (4), so that a caller passing sizeof its buffer is never written past.
TESK_WIN32_API HPROFILE WINAPI OpenColorProfileW(PPROFILE pProfile, DWORD dwDesiredAccess, DWORD dwShareMode,
                                                 DWORD dwCreationMode);
TESK_WIN32_API BOOL WINAPI CloseColorProfile(HPROFILE hProfile);
TESK_WIN32_API BOOL WINAPI IsColorProfileValid(HPROFILE hProfile, PBOOL pbValid);
TESK_WIN32_API BOOL WINAPI GetColorProfileHeader(HPROFILE hProfile, PPROFILEHEADER pHeader);
TESK_WIN32_API BOOL WINAPI SetColorProfileHeader(HPROFILE hProfile, PPROFILEHEADER pHeader);
TESK_WIN32_API BOOL WINAPI GetCountColorProfileElements(HPROFILE hProfile, PDWORD pnElementCount);
TESK_WIN32_API BOOL WINAPI GetColorProfileElementTag(HPROFILE hProfile, DWORD dwIndex, PTAGTYPE pTagType);
TESK_WIN32_API BOOL WINAPI GetColorProfileElement(HPROFILE hProfile, TAGTYPE tag, DWORD dwOffset,
                                                  PDWORD pcbElement, PVOID pElement, PBOOL pbReference);
TESK_WIN32_API BOOL WINAPI SetColorProfileElement(HPROFILE hProfile, TAGTYPE tag, DWORD dwOffset,
                                                  PDWORD pcbElement, PVOID pElement);
TESK_WIN32_API BOOL WINAPI SetColorProfileElementSize(HPROFILE hProfile, TAGTYPE tagType, DWORD pcbElement);
TESK_WIN32_API BOOL WINAPI SetColorProfileElementReference(HPROFILE hProfile, TAGTYPE newTag, TAGTYPE refTag);
TESK_WIN32_API BOOL WINAPI GetColorProfileFromHandle(HPROFILE hProfile, PBYTE pProfileData, PDWORD pcbSize);
TESK_WIN32_API BOOL WINAPI GetColorDirectoryW(PCWSTR pMachineName, PWSTR pBuffer, PDWORD pdwSize);
TESK_WIN32_API BOOL WINAPI GetStandardColorSpaceProfileW(PCWSTR pMachineName, DWORD dwProfileID,
                                                         PWSTR pProfileName, PDWORD pdwSize);
TESK_WIN32_API BOOL WINAPI SetStandardColorSpaceProfileW(PCWSTR pMachineName, DWORD dwProfileID,
                                                         PCWSTR pProfileName);
TESK_WIN32_API BOOL WINAPI InstallColorProfileW(PCWSTR pMachineName, PCWSTR pProfileName);
TESK_WIN32_API BOOL WINAPI UninstallColorProfileW(PCWSTR pMachineName, PCWSTR pProfileName, BOOL bDelete);
TESK_WIN32_API BOOL WINAPI AssociateColorProfileWithDeviceW(PCWSTR pMachineName, PCWSTR pProfileName,
                                                            PCWSTR pDeviceName);
TESK_WIN32_API BOOL WINAPI DisassociateColorProfileFromDeviceW(PCWSTR pMachineName, PCWSTR pProfileName,
                                                               PCWSTR pDeviceName);
TESK_WIN32_API HTRANSFORM WINAPI CreateColorTransformW(LPLOGCOLORSPACEW pLogColorSpace, HPROFILE hDestProfile,
                                                       HPROFILE hTargetProfile, DWORD dwFlags);
TESK_WIN32_API HTRANSFORM WINAPI CreateMultiProfileTransform(PHPROFILE pahProfiles, DWORD nProfiles,
                                                             PDWORD padwIntent, DWORD nIntents, DWORD dwFlags,
                                                             DWORD indexPreferredCMM);
TESK_WIN32_API BOOL WINAPI DeleteColorTransform(HTRANSFORM hxform);
// Linux only: extension flags (TESK_BLACK_POINT_COMPENSATION) that every
// transform this process creates from now on gets besides its own flags;
// 0, the default, for none. FALSE with ERROR_INVALID_PARAMETER for any other bit.
TESK_WIN32_API BOOL WINAPI TeskSetTransformExtensions(DWORD flags);
TESK_WIN32_API BOOL WINAPI TranslateBitmapBits(HTRANSFORM hColorTransform, PVOID pSrcBits, BMFORMAT bmInput,
                                               DWORD dwWidth, DWORD dwHeight, DWORD dwInputStride,
                                               PVOID pDestBits, BMFORMAT bmOutput, DWORD dwOutputStride,
                                               PBMCALLBACKFN pfnCallBack, LPARAM ulCallbackData);
// One result byte per pixel, packed: 0 in gamut, nonzero out of the gamut of
// the transform's last profile.
TESK_WIN32_API BOOL WINAPI CheckBitmapBits(HTRANSFORM hColorTransform, PVOID pSrcBits, BMFORMAT bmInput,
                                           DWORD dwWidth, DWORD dwHeight, DWORD dwStride, PBYTE paResult,
                                           PBMCALLBACKFN pfnCallback, LPARAM lpCallbackData);
TESK_WIN32_API BOOL WINAPI TranslateColors(HTRANSFORM hColorTransform, PCOLOR paInputColors, DWORD nColors,
                                           COLORTYPE ctInput, PCOLOR paOutputColors, COLORTYPE ctOutput);
// The block comes from LocalAlloc; the caller frees it with LocalFree.
TESK_WIN32_API BOOL WINAPI CreateProfileFromLogColorSpaceW(LPLOGCOLORSPACEW pLogColorSpace, PBYTE* pProfile);
TESK_WIN32_API DWORD WINAPI GetCMMInfo(HTRANSFORM hColorTransform, DWORD dwInfo);
TESK_WIN32_API BOOL WINAPI IsColorProfileTagPresent(HPROFILE hProfile, TAGTYPE tag, PBOOL pbPresent);
// A MULTI_SZ of the file names of the installed profiles that match every
// field the record selects; the size counts bytes.
TESK_WIN32_API BOOL WINAPI EnumColorProfilesW(PCWSTR pMachineName, PENUMTYPEW pEnumRecord, PBYTE pEnumerationBuffer,
                                              PDWORD pdwSizeOfEnumerationBuffer, PDWORD pnProfiles);

// The ANSI forms: narrow text is UTF-8, and sizes count bytes of char.
TESK_WIN32_API HPROFILE WINAPI OpenColorProfileA(PPROFILE pProfile, DWORD dwDesiredAccess, DWORD dwShareMode,
                                                 DWORD dwCreationMode);
TESK_WIN32_API BOOL WINAPI GetColorDirectoryA(PCSTR pMachineName, PSTR pBuffer, PDWORD pdwSize);
TESK_WIN32_API BOOL WINAPI GetStandardColorSpaceProfileA(PCSTR pMachineName, DWORD dwProfileID, PSTR pProfileName,
                                                         PDWORD pdwSize);
TESK_WIN32_API BOOL WINAPI SetStandardColorSpaceProfileA(PCSTR pMachineName, DWORD dwProfileID, PCSTR pProfileName);
TESK_WIN32_API BOOL WINAPI InstallColorProfileA(PCSTR pMachineName, PCSTR pProfileName);
TESK_WIN32_API BOOL WINAPI UninstallColorProfileA(PCSTR pMachineName, PCSTR pProfileName, BOOL bDelete);
TESK_WIN32_API BOOL WINAPI AssociateColorProfileWithDeviceA(PCSTR pMachineName, PCSTR pProfileName,
                                                            PCSTR pDeviceName);
TESK_WIN32_API BOOL WINAPI DisassociateColorProfileFromDeviceA(PCSTR pMachineName, PCSTR pProfileName,
                                                               PCSTR pDeviceName);
TESK_WIN32_API BOOL WINAPI EnumColorProfilesA(PCSTR pMachineName, PENUMTYPEA pEnumRecord, PBYTE pEnumerationBuffer,
                                              PDWORD pdwSizeOfEnumerationBuffer, PDWORD pnProfiles);

// ICMUI.DLL
TESK_WIN32_API BOOL WINAPI SetupColorMatchingW(PCOLORMATCHSETUPW pcms);

static_assert(sizeof(PROFILEHEADER) == 128, "PROFILEHEADER is 128 bytes");
static_assert(sizeof(PROFILE) == 24 && offsetof(PROFILE, cbDataSize) == 16, "PROFILE has Win64's layout");
