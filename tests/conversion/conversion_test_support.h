// Images and reference transforms for the conversion tests.
#pragma once
#include <lcms2.h>

#include <random>
#include <string>
#include <vector>

#include "colormgr/ColorManager.h"
#include "host/SingletonManager.h"
#include "host/imaging/RowIteratorBands.h"
#include "support/manager_harness.h"

namespace conversion_test {

// A started manager with the platform's sRGB profile in the colour directory.
class ConversionTest : public colormgr_test::ManagerTest {
protected:
    void SetUp() override {
        ManagerTest::SetUp();
        manager_ = CColorManager::Instance();
        ASSERT_NE(manager_, nullptr);
        ASSERT_TRUE(manager_->IsLoaded());
    }
    CColorManager& Manager() { return *manager_; }
    std::string SrgbPath() const { return ColorDir() + "/sRGB Color Space Profile.icm"; }
    static std::string SwopPath() { return tesk::test::DataPath("ColorProfile/SWOP Coated (TR003).icc"); }

    CColorManager* manager_ = nullptr;
};

// An 8-bit RGB image (B, G, R bytes) of random colours between `low` and `high`.
inline CRowIterator RandomRGB(int width, int height, unsigned seed, int low = 0, int high = 255) {
    CRowIterator image;
    CRowIteratorBands::CreateRGB(image, width, height);
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> value(low, high);
    for (int y = 0; y < height; ++y) {
        BYTE* row = image.GetRow(y);
        for (int i = 0; i < width * 3; ++i) row[i] = static_cast<BYTE>(value(random));
    }
    return image;
}

inline HPROFILE OpenProfile(const std::string& path) {
    std::wstring wide(path.begin(), path.end());
    PROFILE record{PROFILE_FILENAME, wide.data(), static_cast<DWORD>((wide.size() + 1) * 2)};
    return OpenColorProfileW(&record, PROFILE_READ, FILE_SHARE_READ, OPEN_EXISTING);
}

// The platform's own translation of the image to packed C, M, Y, K bytes.
inline std::vector<BYTE> PlatformQuads(const std::string& rgbPath, const std::string& cmykPath,
                                       CRowIterator& image, DWORD intent) {
    HPROFILE profiles[2] = {OpenProfile(rgbPath), OpenProfile(cmykPath)};
    DWORD intents[2] = {intent, intent};
    HTRANSFORM transform = CreateMultiProfileTransform(profiles, 2, intents, 2, BEST_MODE, INDEX_DONT_CARE);
    std::vector<BYTE> quads(size_t(image.GetWidth()) * image.GetHeight() * 4);
    for (int y = 0; y < image.GetHeight(); ++y)
        TranslateBitmapBits(transform, image.GetRow(y), BM_RGBTRIPLETS, image.GetWidth(), 1, 0,
                            &quads[size_t(y) * image.GetWidth() * 4], BM_KYMCQUADS, 0, nullptr, 0);
    DeleteColorTransform(transform);
    CloseColorProfile(profiles[0]);
    CloseColorProfile(profiles[1]);
    return quads;
}

}  // namespace conversion_test
