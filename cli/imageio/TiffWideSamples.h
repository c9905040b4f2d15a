// TIFF samples the imaging library has no layout for: 32-bit floating point,
// and CIELab. They become 16-bit samples as they are read and are made from
// the image's samples as they are written, converted through Little CMS where
// colour changes (Lab, and floating-point RGB with a profile of its own).
#pragma once
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "cli/imageio/Image.h"

namespace teskcolor {

struct STiffLayout;

// The RGB profile Lab and tagged floating-point RGB images are read into: the
// run's working space, asked for when such an image is read. Unset: sRGB.
void SetWideSampleTarget(std::function<std::vector<uint8_t>()> target);

class CWideSampleDecoder {
public:
    // `embedded` is the file's profile, as TakeEmbeddedProfile gave it (Lab files: ignored).
    CWideSampleDecoder(const STiffLayout& layout, const std::vector<uint8_t>& embedded, const std::string& name);
    ~CWideSampleDecoder();
    // The profile of the decoded pixels (empty: untagged, as the file was).
    const std::vector<uint8_t>& Profile() const { return m_profile; }
    // One row of the file into one row of the layout's Format().
    void Decode(const uint8_t* fileRow, uint8_t* imageRow) const;

private:
    struct STransform;
    const STiffLayout& m_layout;
    std::vector<uint8_t> m_profile;
    std::unique_ptr<STransform> m_transform;
    mutable std::vector<float> m_work;
};

class CWideSampleEncoder {
public:
    // Throws CCliError(Unsupported) for an image the coding cannot hold.
    CWideSampleEncoder(ETiffSamples samples, const SImageHeader& header, const std::string& name);
    ~CWideSampleEncoder();
    int FileChannels() const;
    int FileBitsPerSample() const;
    // One row of the image into one row of the file.
    void Encode(const uint8_t* imageRow, uint8_t* fileRow) const;

private:
    struct STransform;
    ETiffSamples m_samples;
    const SImageHeader& m_header;
    std::unique_ptr<STransform> m_transform;
    mutable std::vector<float> m_work;
};

}  // namespace teskcolor
