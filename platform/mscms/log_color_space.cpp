// Profiles for logical colour spaces.
#include <windows.h>

#include <icm.h>
#include <tesk/export_guard.h>

#include <cstring>
#include <new>

#include "color_directory.h"
#include "matrix_profile.h"
#include "profile_access.h"
#include "profile_file_cache.h"

using namespace tesk::mscms;

namespace {

double FromFixed2Dot30(FXPT2DOT30 value) { return value / 1073741824.0; }

bool ChromaticityOf(const CIEXYZ& endpoint, Chromaticity& out) {
    const double x = FromFixed2Dot30(endpoint.ciexyzX);
    const double y = FromFixed2Dot30(endpoint.ciexyzY);
    const double z = FromFixed2Dot30(endpoint.ciexyzZ);
    const double sum = x + y + z;
    if (!(sum > 0)) return false;
    out = {x / sum, y / sum};
    return true;
}

double GammaOf(DWORD fixed16Dot16) {
    // A zero gamma is what an identity curve reads as.
    return fixed16Dot16 == 0 ? 1.0 : fixed16Dot16 / 65536.0;
}

// Endpoints give the primaries' chromaticities, whether stored as XYZ or as
// normalised triples. The record carries no white point; calibrated RGB is
// taken to be relative to D65, as the standard RGB spaces are. The three
// gammas must agree: the profile written has one curve for all channels.
bool CalibratedRgbProfile(const LOGCOLORSPACEW& lcs, Bytes& bytes) {
    MatrixProfileSpec matrix;
    if (!ChromaticityOf(lcs.lcsEndpoints.ciexyzRed, matrix.red) ||
        !ChromaticityOf(lcs.lcsEndpoints.ciexyzGreen, matrix.green) ||
        !ChromaticityOf(lcs.lcsEndpoints.ciexyzBlue, matrix.blue) || lcs.lcsGammaRed != lcs.lcsGammaGreen ||
        lcs.lcsGammaRed != lcs.lcsGammaBlue) {
        SetLastError(ERROR_INVALID_COLORSPACE);
        return false;
    }
    matrix.white = {0.3127, 0.3290};
    matrix.gamma = GammaOf(lcs.lcsGammaRed);
    matrix.description = "Calibrated RGB";
    matrix.copyright = "No copyright, use freely";
    bytes = BuildMatrixProfile(matrix);
    if (bytes.empty()) {
        SetLastError(ERROR_INVALID_COLORSPACE);
        return false;
    }
    return true;
}

bool ProfileOfFile(const LOGCOLORSPACEW& lcs, Bytes& bytes) {
    const size_t length = wcsnlen(lcs.lcsFilename, MAX_PATH);
    if (length == MAX_PATH) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return false;
    }
    if (!ReadProfileFile(ProfilePath(std::wstring(lcs.lcsFilename, length)), bytes)) return false;
    if (!ParseIccContainer(bytes)) {
        SetLastError(ERROR_INVALID_PROFILE);
        return false;
    }
    return true;
}

}  // namespace

namespace tesk::mscms {

bool ProfileBytesFromLogColorSpace(const LOGCOLORSPACEW& logColorSpace, std::vector<uint8_t>& bytes) {
    if (logColorSpace.lcsSignature != LCS_SIGNATURE) {
        SetLastError(ERROR_INVALID_COLORSPACE);
        return false;
    }
    try {
        // A named profile file stands for the space whatever the type says.
        if (logColorSpace.lcsFilename[0] != L'\0') return ProfileOfFile(logColorSpace, bytes);
        switch (logColorSpace.lcsCSType) {
            case LCS_sRGB:
            case LCS_WINDOWS_COLOR_SPACE:
                bytes = BuiltInSrgbProfileBytes();
                return true;
            case LCS_CALIBRATED_RGB:
                return CalibratedRgbProfile(logColorSpace, bytes);
            default:
                SetLastError(ERROR_INVALID_COLORSPACE);
                return false;
        }
    } catch (const std::bad_alloc&) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return false;
    }
}

}  // namespace tesk::mscms

BOOL WINAPI CreateProfileFromLogColorSpaceW(LPLOGCOLORSPACEW pLogColorSpace, PBYTE* pProfile) try {
    if (!pLogColorSpace || !pProfile) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    Bytes bytes;
    if (!ProfileBytesFromLogColorSpace(*pLogColorSpace, bytes)) return FALSE;
    auto* block = static_cast<PBYTE>(LocalAlloc(LMEM_FIXED, bytes.size()));
    if (!block) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return FALSE;
    }
    std::memcpy(block, bytes.data(), bytes.size());
    *pProfile = block;
    return TRUE;
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}
