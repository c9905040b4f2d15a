#include <algorithm>
#include <cstring>
#include <new>

#include "icc/ICCReadColorProfile.h"
#include "icc/TagDecoders.h"

namespace {
constexpr unsigned long kDescriptionTag = 'desc';
constexpr unsigned long kCopyrightTag = 'cprt';
}  // namespace

unsigned char* CICCReadColorProfile::GetRequestedTag(unsigned long tag, unsigned long& size) {
    if (!m_hProfile || !m_pfnGetColorProfileElement) return nullptr;
    GetNumberOfTags(m_hProfile);
    DWORD count = 0;
    BOOL reference = FALSE;
    m_pfnGetColorProfileElement(m_hProfile, static_cast<TAGTYPE>(tag), 0, &count, nullptr, &reference);
    if (count == 0) return nullptr;
    auto* buffer = new (std::nothrow) unsigned char[count];
    if (!buffer) return nullptr;
    std::memset(buffer, 0, count);
    const DWORD allocated = count;
    m_pfnGetColorProfileElement(m_hProfile, static_cast<TAGTYPE>(tag), 0, &count, buffer, &reference);
    // Never report more than the buffer holds, whatever the platform says.
    size = std::min(count, allocated);
    return buffer;
}

bool CICCReadColorProfile::DoesProfileTagExist(unsigned long tag) {
    if (!m_hProfile || !m_pfnGetColorProfileElement) return false;
    DWORD count = 0;
    BOOL reference = FALSE;
    m_pfnGetColorProfileElement(m_hProfile, static_cast<TAGTYPE>(tag), 0, &count, nullptr, &reference);
    return count > 0;
}

bool CICCReadColorProfile::GetDescription(CString& text) {
    unsigned long size = 0;
    unsigned char* data = GetRequestedTag(kDescriptionTag, size);
    if (!data) return false;
    const tesk::icc::TagBytes tag(data, size);
    bool taken = false;
    if (tag.TypeSignature() == tesk::icc::kDescTypeSignature) {
        text = tesk::icc::DecodeDescWide(tag).c_str();
        taken = true;
    } else if (tag.TypeSignature() == tesk::icc::kMlucTypeSignature) {
        std::wstring wide;
        taken = tesk::icc::DecodeMlucFirstRecord(tag, wide);
        if (taken) text = wide.c_str();
    }
    delete[] data;
    return taken;
}

bool CICCReadColorProfile::GetCopyright(CString& text) {
    unsigned long size = 0;
    unsigned char* data = GetRequestedTag(kCopyrightTag, size);
    if (!data) return false;
    const tesk::icc::TagBytes tag(data, size);
    const bool isText = tag.TypeSignature() == tesk::icc::kTextTypeSignature;
    if (isText) text = tesk::icc::DecodeTextType(tag).c_str();
    delete[] data;
    return isText;
}
