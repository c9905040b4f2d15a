// Loads the module as a host does and does real work through it and the
// system's colour system: checks a CMYK printer profile, then converts
// colours to CMYK with the manager and its default CMYK profile. The strings
// of the resource library, the profile's name and the CMYK values go to
// standard output, one a line, so that two builds of the module can be compared.
#include <windows.h>

#include <icm.h>
#include <tesk/path.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "colormgr/ColorManager.h"
#include "host/SettingsStore.h"
#include "icc/ICCReadColorProfile.h"

namespace {

int Fail(const char* what) {
    std::fprintf(stderr, "module_smoke: %s\n", what);
    return 1;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return Fail("usage: module_smoke <CMYK printer profile>");
    const std::filesystem::path file = std::filesystem::absolute(tesk::path::FileSystemPath(argv[1]));
    std::ifstream in(file, std::ios::binary);
    std::vector<unsigned char> bytes(std::istreambuf_iterator<char>(in), {});
    if (bytes.empty()) return Fail("cannot read the profile");

    CICCReadColorProfile fromMemory;
    bool valid = false;
    if (!fromMemory.CreateFromRawData(bytes.data(), static_cast<unsigned long>(bytes.size()), valid) || !valid)
        return Fail("the module refuses the profile held in memory");
    CString description;
    if (!fromMemory.GetDescription(description) || description.IsEmpty())
        return Fail("the profile's description cannot be read");
    CICCReadColorProfile fromFile;
    CString windowsPath(tesk::path::ToWindows(tesk::path::Utf8Path(file)));
    if (!fromFile.IsProfileCMYK(windowsPath)) return Fail("the colour system does not open it as a CMYK printer profile");

    RegisterSettingsStoreService();
    CColorManager* manager = CColorManager::Instance();
    if (!manager || !manager->IsLoaded()) return Fail("the colour manager did not load the colour system");
    // The default profiles are named by the resource library the module
    // loaded beside the host library; conversions use the default CMYK one.
    for (UINT id : {10401u, 10402u, 10403u}) {
        CString text;
        if (!text.LoadString(id)) return Fail("a string of the resource library did not load");
        std::printf("string %u: %s\n", id, tesk::path::Utf8(text.GetString()).c_str());
    }
    CString cmykProfile;
    manager->GetCMYKProfile(cmykProfile);
    std::printf("CMYK profile: %s\n", tesk::path::Utf8(cmykProfile.GetString()).c_str());
    // Inks are compared with another colour system's within one unit: our 8-bit
    // grid and Wine's direct evaluation may round a value apart (RGB 250 220 180
    // on the SWOP profile is black 14.60: 14 here, 15 under Wine).
    const COLORREF colours[] = {RGB(0, 0, 0),     RGB(255, 255, 255), RGB(255, 0, 0),     RGB(0, 255, 0),
                                RGB(0, 0, 255),   RGB(0, 255, 255),   RGB(255, 0, 255),   RGB(255, 255, 0),
                                RGB(128, 128, 128), RGB(200, 120, 40), RGB(30, 60, 90),  RGB(250, 220, 180)};
    for (COLORREF colour : colours) {
        DWORD rgb = colour;
        BYTE c = 0, m = 0, y = 0, k = 0;
        if (manager->ColorTransformRGBtoCMYK(rgb, c, m, y, k, false) != VELL_OK)
            return Fail("the RGB to CMYK conversion failed");
        // Without a transform the conversion succeeds with no ink at all.
        if (colour == RGB(0, 0, 0) && k == 0) return Fail("black came out without black ink");
        std::printf("%3u %3u %3u -> %3u %3u %3u %3u\n", GetRValue(colour), GetGValue(colour), GetBValue(colour), c, m,
                    y, k);
    }
    return 0;
}
