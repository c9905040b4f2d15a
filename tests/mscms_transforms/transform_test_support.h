// Profiles and transforms for the transform tests: profiles made by lcms2 or
// read from the data folder, opened through the platform from memory.
#pragma once
#include <icm.h>
#include <lcms2.h>
#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

#include "support/temp_env.h"

namespace tesk::test {

using Bytes = std::vector<uint8_t>;

Bytes SaveProfile(cmsHPROFILE profile);  // closes `profile`
Bytes SrgbProfile();                     // lcms2's sRGB
Bytes GrayProfile();                     // gamma 2.2 grey, D50 white
Bytes LabProfile();                      // Lab identity (version 4)
Bytes XyzProfile();                      // XYZ identity
Bytes FograProfile();                    // "ISO Coated (FOGRA39).icc"
// A file's bytes, or empty when it is not installed.
Bytes InstalledProfile(const std::string& path);

class OpenedProfile {
public:
    explicit OpenedProfile(const Bytes& bytes);
    ~OpenedProfile();
    OpenedProfile(const OpenedProfile&) = delete;
    OpenedProfile& operator=(const OpenedProfile&) = delete;
    HPROFILE Get() const { return handle_; }

private:
    HPROFILE handle_;
};

class Transform {
public:
    explicit Transform(HTRANSFORM handle = nullptr) : handle_(handle) {}
    ~Transform();
    Transform(Transform&& other) noexcept : handle_(other.handle_) { other.handle_ = nullptr; }
    Transform(const Transform&) = delete;
    Transform& operator=(const Transform&) = delete;
    HTRANSFORM Get() const { return handle_; }
    explicit operator bool() const { return handle_ != nullptr; }

private:
    HTRANSFORM handle_;
};

// CreateMultiProfileTransform over freshly opened copies of `profiles`.
Transform MakeTransform(const std::vector<const Bytes*>& profiles, std::vector<DWORD> intents,
                        DWORD flags = BEST_MODE);

// The same conversion done by lcms2 directly, for comparison.
Bytes LcmsReference(const Bytes& from, const Bytes& to, cmsUInt32Number inFormat, cmsUInt32Number outFormat,
                    cmsUInt32Number intent, cmsUInt32Number flags, const Bytes& pixels, size_t count);

// Pseudo-random bytes, the same for the same seed.
Bytes NoiseBytes(size_t size, uint32_t seed);

}  // namespace tesk::test
