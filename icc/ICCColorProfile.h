// One open colour profile of the platform's colour system together with its
// name. Every object binds the platform functions it needs for itself, so it
// works wherever it is created, independently of the colour manager.
#pragma once
#include <windows.h>
#include <icm.h>

#include <string>

#include "host/CString.h"
#include "icc/ICCTypes.h"
#include "module/Export.h"

class TESKCOLORMGR_API CICCColorProfile {
public:
    CICCColorProfile();
    // Adopts `handle` as given (opens nothing); `name` may be null.
    CICCColorProfile(void*& handle, const wchar_t* name, bool owns);
    // Shares the handle and owns it as well: callers that copy clear one side
    // or close through CloseProfile(void*&) first.
    CICCColorProfile(const CICCColorProfile& other);
    // Member-wise, module references included (no new reference is taken).
    CICCColorProfile& operator=(const CICCColorProfile& other);
    virtual ~CICCColorProfile();

    // Opens the profile for reading; the handle is returned, not adopted.
    void* OpenICCProfile(wchar_t* name);
    // Adopts a non-null `handle` (closing the current one); null changes nothing.
    void SetProfile(void*& handle, wchar_t* name);
    void* GetProfile();
    // The profile bytes of `handle`; `buffer` may be null to ask for the size.
    bool GetProfile(void*& handle, unsigned char* buffer, unsigned long* size);
    bool GetProfileHandle(void*& handle);
    bool CloseProfile();
    bool CloseProfile(void*& handle);

    int GetNumberOfTags(void*& profile);
    // Decodes this object's `desc` or `mluc` tag (the handle is not used).
    bool GetTextString(void*& profile, unsigned long tag, std::string& text);

    // The folder in which a profile of that name is looked for.
    void GetColorDirectoryW(CString& directory, CString name);
    // 1 for the program's own profiles, kept beside the executable.
    int IsCustomColorProfile(CString name);
    bool Is64BitWindows();

protected:
    virtual unsigned char* GetRequestedTag(unsigned long tag, unsigned long& size);
    virtual bool SetRequestedTag(unsigned long tag, CString& text, unsigned char* data);

    void* CreateTransform(void** profiles, unsigned long count, unsigned long* intents, unsigned long intentCount);
    void* CreateTransform2Profile(void* source, void* destination, unsigned long intent);

    // The path a name stands for: as it is when it holds ':' or '\\', else
    // the name in its colour directory.
    CString BuildProfilePath(const wchar_t* name);

    // Loads ICMUI.DLL then MSCMS.DLL into the two module slots with critical
    // error boxes off; true when both loaded.
    bool LoadPlatformModules();

    using PFN_GetColorProfileHeader = decltype(&::GetColorProfileHeader);
    using PFN_GetCountColorProfileElements = decltype(&::GetCountColorProfileElements);
    using PFN_OpenColorProfileW = decltype(&::OpenColorProfileW);
    using PFN_CloseColorProfile = decltype(&::CloseColorProfile);
    using PFN_IsColorProfileValid = decltype(&::IsColorProfileValid);
    using PFN_GetColorDirectoryW = decltype(&::GetColorDirectoryW);
    using PFN_GetColorProfileFromHandle = decltype(&::GetColorProfileFromHandle);
    using PFN_DeleteColorTransform = decltype(&::DeleteColorTransform);
    using PFN_CreateMultiProfileTransform = decltype(&::CreateMultiProfileTransform);
    using PFN_GetColorProfileElementTag = decltype(&::GetColorProfileElementTag);
    using PFN_GetColorProfileElement = decltype(&::GetColorProfileElement);
    using PFN_CreateProfileFromLogColorSpaceW = decltype(&::CreateProfileFromLogColorSpaceW);
    using PFN_SetColorProfileElement = decltype(&::SetColorProfileElement);
    using PFN_SetColorProfileElementSize = decltype(&::SetColorProfileElementSize);
    using PFN_SetColorProfileHeader = decltype(&::SetColorProfileHeader);
    using PFN_SetColorProfileElementReference = decltype(&::SetColorProfileElementReference);
    using PFN_GetCMMInfo = decltype(&::GetCMMInfo);

    void* m_hProfile = nullptr;
    CString m_strProfileName;
    HMODULE m_hICMUI = nullptr;
    HMODULE m_hMSCMS = nullptr;
    BOOL m_bOwnsHandle = TRUE;

    PFN_GetColorProfileHeader m_pfnGetColorProfileHeader = nullptr;
    PFN_GetCountColorProfileElements m_pfnGetCountColorProfileElements = nullptr;
    PFN_OpenColorProfileW m_pfnOpenColorProfileW = nullptr;
    PFN_CloseColorProfile m_pfnCloseColorProfile = nullptr;
    PFN_IsColorProfileValid m_pfnIsColorProfileValid = nullptr;
    PFN_GetColorDirectoryW m_pfnGetColorDirectoryW = nullptr;
    PFN_GetColorProfileFromHandle m_pfnGetColorProfileFromHandle = nullptr;
    PFN_DeleteColorTransform m_pfnDeleteColorTransform = nullptr;
    PFN_CreateMultiProfileTransform m_pfnCreateMultiProfileTransform = nullptr;

private:
    void BindPlatformFunctions(bool bindProfileFromHandle);
};
