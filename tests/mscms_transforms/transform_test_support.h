// Profiles and transforms for the transform tests: profiles made by lcms2 or
// read from the data folder, opened through the platform from memory.
#pragma once
#include <windows.h>

#include <icm.h>
#include <lcms2.h>

#include <cstdint>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/frame_fails_with.h"
#include "support/lcms_profiles.h"
#include "support/temp_env.h"

namespace tesk::test {

inline Bytes LabProfile() { return SavedProfile(cmsCreateLab4Profile(nullptr)); }
inline Bytes XyzProfile() { return SavedProfile(cmsCreateXYZProfile()); }
inline Bytes FograProfile() { return ReadBytes(DataPath("ColorProfile/ISO Coated (FOGRA39).icc")); }
// A file's bytes, or empty when it is not installed.
inline Bytes InstalledProfile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return in ? Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()) : Bytes();
}

class OpenedProfile {
public:
    explicit OpenedProfile(const Bytes& bytes) {
        PROFILE profile{PROFILE_MEMBUFFER, const_cast<uint8_t*>(bytes.data()), static_cast<DWORD>(bytes.size())};
        handle_ = OpenColorProfileW(&profile, PROFILE_READ, FILE_SHARE_READ, OPEN_EXISTING);
        if (!handle_) throw std::runtime_error("OpenColorProfileW failed: " + std::to_string(GetLastError()));
    }
    ~OpenedProfile() { CloseColorProfile(handle_); }
    OpenedProfile(const OpenedProfile&) = delete;
    OpenedProfile& operator=(const OpenedProfile&) = delete;
    HPROFILE Get() const { return handle_; }

private:
    HPROFILE handle_;
};

class Transform {
public:
    explicit Transform(HTRANSFORM handle = nullptr) : handle_(handle) {}
    ~Transform() {
        if (handle_) DeleteColorTransform(handle_);
    }
    Transform(Transform&& other) noexcept : handle_(other.handle_) { other.handle_ = nullptr; }
    Transform(const Transform&) = delete;
    Transform& operator=(const Transform&) = delete;
    HTRANSFORM Get() const { return handle_; }
    explicit operator bool() const { return handle_ != nullptr; }

private:
    HTRANSFORM handle_;
};

// CreateMultiProfileTransform over freshly opened copies of `profiles`; null when refused.
inline Transform TryMakeTransform(const std::vector<const Bytes*>& profiles, std::vector<DWORD> intents,
                                  DWORD flags = BEST_MODE) {
    std::vector<std::unique_ptr<OpenedProfile>> opened;
    std::vector<HPROFILE> handles;
    for (const Bytes* bytes : profiles) {
        opened.push_back(std::make_unique<OpenedProfile>(*bytes));
        handles.push_back(opened.back()->Get());
    }
    return Transform(CreateMultiProfileTransform(handles.data(), static_cast<DWORD>(handles.size()), intents.data(),
                                                 static_cast<DWORD>(intents.size()), flags, INDEX_DONT_CARE));
}

// The same, for transforms a test relies on: a refusal ends the test.
inline Transform MakeTransform(const std::vector<const Bytes*>& profiles, std::vector<DWORD> intents,
                               DWORD flags = BEST_MODE) {
    Transform transform = TryMakeTransform(profiles, std::move(intents), flags);
    if (!transform) throw std::runtime_error("CreateMultiProfileTransform failed: " + std::to_string(GetLastError()));
    return transform;
}

// TranslateBitmapBits over packed rows (stride 0) without a callback.
inline BOOL TranslatePacked(const Transform& transform, const void* in, BMFORMAT from, DWORD width, DWORD height,
                            void* out, BMFORMAT to) {
    return TranslateBitmapBits(transform.Get(), const_cast<void*>(in), from, width, height, 0, out, to, 0, nullptr,
                               0);
}

// The same conversion done by lcms2 directly, for comparison.
inline Bytes LcmsReference(const Bytes& from, const Bytes& to, cmsUInt32Number inFormat, cmsUInt32Number outFormat,
                           cmsUInt32Number intent, cmsUInt32Number flags, const Bytes& pixels, size_t count) {
    cmsHPROFILE in = cmsOpenProfileFromMem(from.data(), static_cast<cmsUInt32Number>(from.size()));
    cmsHPROFILE out = cmsOpenProfileFromMem(to.data(), static_cast<cmsUInt32Number>(to.size()));
    cmsHTRANSFORM transform = cmsCreateTransform(in, inFormat, out, outFormat, intent, flags);
    cmsCloseProfile(in);
    cmsCloseProfile(out);
    if (!transform) throw std::runtime_error("lcms2 reference transform");
    Bytes result(count * T_BYTES(outFormat) * (T_CHANNELS(outFormat) + T_EXTRA(outFormat)));
    cmsDoTransform(transform, pixels.data(), result.data(), static_cast<cmsUInt32Number>(count));
    cmsDeleteTransform(transform);
    return result;
}

// Pseudo-random bytes, the same for the same seed.
inline Bytes NoiseBytes(size_t size, uint32_t seed) {
    std::mt19937 random(seed);
    Bytes bytes(size);
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random() >> 24);
    return bytes;
}

}  // namespace tesk::test
