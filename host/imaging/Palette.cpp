#include "host/imaging/Palette.h"

#include <cstring>

CVPalette::CVPalette(const RGBQUAD* entries, int count) {
    if (count > kMaxEntries) count = kMaxEntries;
    if (entries && count > 0) m_entries.assign(entries, entries + count);
}

void CVPalette::CreateGreyscale(int count) {
    if (count < 1) count = 1;
    if (count > kMaxEntries) count = kMaxEntries;
    m_entries.assign(size_t(count), RGBQUAD{});
    for (int i = 0; i < count; ++i) {
        // Spread evenly so that the first entry is black and the last white.
        BYTE level = count == 1 ? 0 : BYTE((i * 255 + (count - 1) / 2) / (count - 1));
        m_entries[size_t(i)] = RGBQUAD{level, level, level, 0};
    }
}

bool CVPalette::Set(const RGBQUAD* entries, int count) {
    if (count < 0 || count > kMaxEntries || (count > 0 && !entries)) return false;
    m_entries.assign(entries, entries + count);
    return true;
}

bool CVPalette::IsGreyscale() const {
    for (const RGBQUAD& e : m_entries)
        if (e.rgbRed != e.rgbGreen || e.rgbGreen != e.rgbBlue) return false;
    return true;
}

int CVPalette::FindNearestEntry(int red, int green, int blue) const {
    const int r = red & 0xFF, g = green & 0xFF, b = blue & 0xFF;
    int best = -1;
    int bestDistance = 0;
    for (size_t i = 0; i < m_entries.size(); ++i) {
        const RGBQUAD& e = m_entries[i];
        const int dr = e.rgbRed - r, dg = e.rgbGreen - g, db = e.rgbBlue - b;
        const int distance = dr * dr + dg * dg + db * db;
        if (best < 0 || distance < bestDistance) {
            best = int(i);
            bestDistance = distance;
            if (distance == 0) break;
        }
    }
    return best;
}

bool CVPalette::operator==(const CVPalette& other) const {
    return m_entries.size() == other.m_entries.size() &&
           (m_entries.empty() ||
            std::memcmp(m_entries.data(), other.m_entries.data(), m_entries.size() * sizeof(RGBQUAD)) == 0);
}
