// Untrusted embedded-profile bytes through the profile reader: the checks and
// repair of CreateFromRawData, then every reading operation on the result.
// A second reader stands on a platform that takes every profile it can open
// as valid, so damaged tags reach the readers instead of being refused.
#include <tesk/loader.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "icc/ICCReadColorProfile.h"

namespace {

BOOL WINAPI AcceptAnyProfile(HPROFILE, PBOOL valid) {
    if (valid) *valid = TRUE;
    return TRUE;
}

void ReleaseCurve(TRCCURVE& curve) {
    if (curve.m_nSignature == 'curv' && curve.m_curve.m_nCount >= 2) delete[] curve.m_curve.m_pEntries;
}

void ReadEverything(CICCReadColorProfile& reader, CICCReadColorProfile& other) {
    void* handle = reader.GetProfile();
    if (!handle) return;
    reader.GetNumberOfTags(handle);
    for (uint32_t tag : {uint32_t('desc'), uint32_t('cprt'), uint32_t('dmnd'), uint32_t('dmdd')}) {
        std::string text;
        reader.GetTextString(handle, tag, text);
        reader.DoesProfileTagExist(tag);
    }
    CString text;
    reader.GetDescription(text);
    reader.GetCopyright(text);
    for (uint32_t tag : {uint32_t('rTRC'), uint32_t('gTRC'), uint32_t('bTRC'), uint32_t('kTRC')}) {
        TRCCURVE curve;
        std::memset(&curve, 0, sizeof curve);
        reader.GetTRC(tag, curve);
        ReleaseCurve(curve);
    }
    reader.IsTRCsSame(other);
    if (reader.DoesProfileTagExist('vcgt')) {
        SVCGTGamma gamma;
        std::memset(&gamma, 0, sizeof gamma);
        if (reader.GetVCGTTable(gamma) && gamma.m_nGammaType == 0) delete[] gamma.m_table.m_pData;
    }
    for (uint32_t tag : {uint32_t('rXYZ'), uint32_t('gXYZ'), uint32_t('bXYZ'), uint32_t('wtpt'), uint32_t('bkpt')}) {
        SMyXYZNumber xyz{};
        reader.GetXYZColorant(xyz, tag);
    }
    reader.IsMediaWhitePointSame(other);
    reader.IsMediaBlackPointSame(other);
    double matrix[9];
    reader.GetChromaticAdaptationTag(matrix);
    SColorSpecRGB colorSpec{};
    reader.BuildColorSpecRGB(colorSpec);
    reader.GetLCSCSType(handle);
    LOGCOLORSPACEW lcs;
    reader.CreateLogColorSpaceFromCurrentProfile(lcs);
    void* otherHandle = other.GetProfile();
    if (otherHandle) reader.AreHeadersSame(otherHandle);
}

CICCReadColorProfile* LenientReader() {
    tesk::loader::Substitute lenient;
    lenient.overrides["IsColorProfileValid"] =
        reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(&AcceptAnyProfile));
    tesk::loader::SetSubstitute(L"MSCMS.DLL", lenient);
    auto* reader = new CICCReadColorProfile();
    tesk::loader::ClearSubstitutes();
    return reader;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size > (1u << 22)) return 0;
    static CICCReadColorProfile* const lenient = LenientReader();
    static CICCReadColorProfile* const strict = new CICCReadColorProfile();
    // The reader may take the block as writable data only through the
    // platform's copy; give it a copy of its own all the same.
    std::vector<uint8_t> bytes(data, data + size);
    bool valid = true;
    if (strict->CreateFromRawData(bytes.data(), static_cast<unsigned long>(bytes.size()), valid)) {
        ReadEverything(*strict, *strict);
        strict->CloseProfile();
    }
    if (lenient->CreateFromRawData(bytes.data(), static_cast<unsigned long>(bytes.size()), valid)) {
        ReadEverything(*lenient, *lenient);
        lenient->CloseProfile();
    }
    return 0;
}
