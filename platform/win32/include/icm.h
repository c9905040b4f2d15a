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
#define CMM_WINDOWS_DEFAULT 'Win '

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
#define SPACE_RGB 'RGB '
#define SPACE_CMYK 'CMYK'

// GetCMMInfo.
#define CMM_WIN_VERSION 0
#define CMM_IDENT 1
#define CMM_DRIVER_VERSION 2
#define CMM_DLL_VERSION 3
#define CMM_VERSION 4
#define CMM_DESCRIPTION 5
#define CMM_LOGOICON 6

#define MAX_COLOR_CHANNELS 8

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
#define CLASS_MONITOR 'mntr'
#define CLASS_PRINTER 'prtr'
#define CLASS_SCANNER 'scnr'
#define CLASS_LINK 'link'
#define CLASS_ABSTRACT 'abst'
#define CLASS_COLORSPACE 'spac'
#define CLASS_NAMED 'nmcl'
#define SPACE_XYZ 'XYZ '
#define SPACE_Lab 'Lab '
#define SPACE_GRAY 'GRAY'

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

// MSCMS.DLL. Sizes in bytes of wide text count two bytes a character, as on
// Windows, so that documented constants (513, 1026) keep their meaning.
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
TESK_WIN32_API BOOL WINAPI TranslateBitmapBits(HTRANSFORM hColorTransform, PVOID pSrcBits, BMFORMAT bmInput,
                                               DWORD dwWidth, DWORD dwHeight, DWORD dwInputStride,
                                               PVOID pDestBits, BMFORMAT bmOutput, DWORD dwOutputStride,
                                               PBMCALLBACKFN pfnCallBack, LPARAM ulCallbackData);
TESK_WIN32_API BOOL WINAPI TranslateColors(HTRANSFORM hColorTransform, PCOLOR paInputColors, DWORD nColors,
                                           COLORTYPE ctInput, PCOLOR paOutputColors, COLORTYPE ctOutput);
// The block comes from LocalAlloc; the caller frees it with LocalFree.
TESK_WIN32_API BOOL WINAPI CreateProfileFromLogColorSpaceW(LPLOGCOLORSPACEW pLogColorSpace, PBYTE* pProfile);
TESK_WIN32_API DWORD WINAPI GetCMMInfo(HTRANSFORM hColorTransform, DWORD dwInfo);

// ICMUI.DLL
TESK_WIN32_API BOOL WINAPI SetupColorMatchingW(PCOLORMATCHSETUPW pcms);

static_assert(sizeof(PROFILEHEADER) == 128, "PROFILEHEADER is 128 bytes");
static_assert(sizeof(PROFILE) == 24 && offsetof(PROFILE, cbDataSize) == 16, "PROFILE has Win64's layout");
