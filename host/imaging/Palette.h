// A colour table of at most 256 RGBQUAD entries, for indexed images.
#pragma once
#include <windows.h>

#include <vector>

#include "host/imaging/ImagingApi.h"

class VIMAGING_API CVPalette {
public:
    static constexpr int kMaxEntries = 256;

    CVPalette() = default;
    // Copies `count` entries (clamped to 0..256).
    CVPalette(const RGBQUAD* entries, int count);

    // `count` evenly spaced greys from black to white (256 by default).
    void CreateGreyscale(int count = kMaxEntries);
    // Replaces the entries; false (palette unchanged) when count is outside 0..256
    // or entries is null with a positive count.
    bool Set(const RGBQUAD* entries, int count);
    void Clear() { m_entries.clear(); }

    int GetCount() const { return int(m_entries.size()); }
    bool IsEmpty() const { return m_entries.empty(); }
    const RGBQUAD* GetEntries() const { return m_entries.empty() ? nullptr : m_entries.data(); }
    const RGBQUAD& operator[](int index) const { return m_entries[size_t(index)]; }
    RGBQUAD& operator[](int index) { return m_entries[size_t(index)]; }
    // True when every entry has red = green = blue.
    bool IsGreyscale() const;

    // Index of the entry closest to the colour (squared RGB distance; the first
    // of equally close entries). Only the low byte of each argument counts.
    // -1 for an empty palette.
    int FindNearestEntry(int red, int green, int blue) const;

    bool operator==(const CVPalette& other) const;

private:
    std::vector<RGBQUAD> m_entries;
};
