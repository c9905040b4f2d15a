#include "transform_test_support.h"

#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <stdexcept>

#include "support/temp_env.h"

namespace tesk::test {

Bytes SaveProfile(cmsHPROFILE profile) {
    cmsUInt32Number size = 0;
    if (!profile || !cmsSaveProfileToMem(profile, nullptr, &size)) throw std::runtime_error("lcms2 profile");
    Bytes bytes(size);
    cmsSaveProfileToMem(profile, bytes.data(), &size);
    cmsCloseProfile(profile);
    return bytes;
}

Bytes SrgbProfile() { return SaveProfile(cmsCreate_sRGBProfile()); }

Bytes GrayProfile() {
    cmsToneCurve* gamma = cmsBuildGamma(nullptr, 2.2);
    Bytes bytes = SaveProfile(cmsCreateGrayProfile(cmsD50_xyY(), gamma));
    cmsFreeToneCurve(gamma);
    return bytes;
}

Bytes LabProfile() { return SaveProfile(cmsCreateLab4Profile(nullptr)); }
Bytes XyzProfile() { return SaveProfile(cmsCreateXYZProfile()); }
Bytes FograProfile() { return ReadBytes(DataPath("ColorProfile/ISO Coated (FOGRA39).icc")); }

Bytes InstalledProfile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return {};
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

OpenedProfile::OpenedProfile(const Bytes& bytes) {
    PROFILE profile{PROFILE_MEMBUFFER, const_cast<uint8_t*>(bytes.data()), static_cast<DWORD>(bytes.size())};
    handle_ = OpenColorProfileW(&profile, PROFILE_READ, FILE_SHARE_READ, OPEN_EXISTING);
    if (!handle_) throw std::runtime_error("OpenColorProfileW failed: " + std::to_string(GetLastError()));
}

OpenedProfile::~OpenedProfile() { CloseColorProfile(handle_); }

Transform::~Transform() {
    if (handle_) DeleteColorTransform(handle_);
}

Transform MakeTransform(const std::vector<const Bytes*>& profiles, std::vector<DWORD> intents, DWORD flags) {
    std::vector<std::unique_ptr<OpenedProfile>> opened;
    std::vector<HPROFILE> handles;
    for (const Bytes* bytes : profiles) {
        opened.push_back(std::make_unique<OpenedProfile>(*bytes));
        handles.push_back(opened.back()->Get());
    }
    return Transform(CreateMultiProfileTransform(handles.data(), static_cast<DWORD>(handles.size()), intents.data(),
                                                 static_cast<DWORD>(intents.size()), flags, INDEX_DONT_CARE));
}

Bytes LcmsReference(const Bytes& from, const Bytes& to, cmsUInt32Number inFormat, cmsUInt32Number outFormat,
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

Bytes NoiseBytes(size_t size, uint32_t seed) {
    std::mt19937 random(seed);
    Bytes bytes(size);
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random() >> 24);
    return bytes;
}

}  // namespace tesk::test
