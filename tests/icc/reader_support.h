// Readers over test profiles, and a view of the reader's protected parts.
#pragma once
#include <gtest/gtest.h>
#include <tesk/loader.h>

#include <memory>
#include <string>

#include "icc/ICCReadColorProfile.h"
#include "icc_builder.h"

namespace tesk::test::icc {

// Exposes what a derived class of the profile classes may see.
class ReaderProbe : public CICCReadColorProfile {
public:
    using CICCReadColorProfile::CICCReadColorProfile;
    using CICCColorProfile::m_pfnDeleteColorTransform;
    using CICCColorProfile::m_pfnGetColorProfileHeader;
    using CICCColorProfile::CreateTransform2Profile;
};

// A reader holding the profile made from `bytes`; null handle when refused.
inline std::unique_ptr<ReaderProbe> ReaderOf(Bytes bytes) {
    auto reader = std::make_unique<ReaderProbe>();
    bool valid = true;
    reader->CreateFromRawData(bytes.data(), static_cast<unsigned long>(bytes.size()), valid);
    return reader;
}

// A reader whose platform takes every profile it can open as valid, for
// profiles the real validity rules would refuse.
inline BOOL WINAPI AcceptAnyProfile(HPROFILE, PBOOL valid) {
    if (valid) *valid = TRUE;
    return TRUE;
}
inline std::unique_ptr<ReaderProbe> LenientReaderOf(Bytes bytes) {
    tesk::loader::Substitute lenient;
    lenient.overrides["IsColorProfileValid"] =
        reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(&AcceptAnyProfile));
    tesk::loader::SetSubstitute(L"MSCMS.DLL", lenient);
    auto reader = ReaderOf(std::move(bytes));
    tesk::loader::ClearSubstitutes();
    return reader;
}

inline bool HeaderOf(CICCColorProfile& profile, PROFILEHEADER& header) {
    auto* probe = static_cast<ReaderProbe*>(&profile);
    return probe->m_pfnGetColorProfileHeader(profile.GetProfile(), &header) != FALSE;
}

}  // namespace tesk::test::icc
