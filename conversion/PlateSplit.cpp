#include "conversion/PlateSplit.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace {

#if defined(__SSE2__)
// Byte p of each of 16 pixels' quads, in pixel order.
inline __m128i GatherInk(const __m128i q[4], int p) {
    const __m128i low = _mm_set1_epi32(0xFF);
    // Each 32-bit lane is one pixel; its byte p, moved down, fits the packs exactly.
    __m128i lane[4];
    for (int i = 0; i < 4; ++i) lane[i] = _mm_and_si128(_mm_srli_epi32(q[i], 8 * p), low);
    return _mm_packus_epi16(_mm_packs_epi32(lane[0], lane[1]), _mm_packs_epi32(lane[2], lane[3]));
}

inline void LoadQuads(const uint8_t* quads, __m128i q[4]) {
    for (int i = 0; i < 4; ++i) q[i] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(quads + 16 * i));
}
#endif

}  // namespace

void SplitQuads(const uint8_t* quads, size_t width, uint8_t* const plates[4], uint8_t flip) {
    size_t x = 0;
#if defined(__SSE2__)
    const __m128i flips = _mm_set1_epi8(static_cast<char>(flip));
    for (; x + 16 <= width; x += 16) {
        __m128i q[4];
        LoadQuads(quads + x * 4, q);
        for (int p = 0; p < 4; ++p)
            _mm_storeu_si128(reinterpret_cast<__m128i*>(plates[p] + x), _mm_xor_si128(GatherInk(q, p), flips));
    }
#endif
    for (; x < width; ++x)
        for (int p = 0; p < 4; ++p) plates[p][x] = static_cast<uint8_t>(quads[x * 4 + p] ^ flip);
}

void SplitQuadsWide(const uint8_t* quads, size_t width, uint16_t* const plates[4], uint16_t flip) {
    size_t x = 0;
#if defined(__SSE2__)
    const __m128i flips = _mm_set1_epi16(static_cast<short>(flip));
    for (; x + 16 <= width; x += 16) {
        __m128i q[4];
        LoadQuads(quads + x * 4, q);
        for (int p = 0; p < 4; ++p) {
            const __m128i bytes = GatherInk(q, p);
            // A byte beside itself is the byte times 257.
            _mm_storeu_si128(reinterpret_cast<__m128i*>(plates[p] + x),
                             _mm_xor_si128(_mm_unpacklo_epi8(bytes, bytes), flips));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(plates[p] + x + 8),
                             _mm_xor_si128(_mm_unpackhi_epi8(bytes, bytes), flips));
        }
    }
#endif
    for (; x < width; ++x)
        for (int p = 0; p < 4; ++p) plates[p][x] = static_cast<uint16_t>(quads[x * 4 + p] * 257 ^ flip);
}
