#include "conversion/PlateSplit.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

void SplitQuads(const uint8_t* quads, size_t width, uint8_t* const plates[4], uint8_t flip) {
    size_t x = 0;
#if defined(__SSE2__)
    const __m128i low = _mm_set1_epi32(0xFF);
    const __m128i flips = _mm_set1_epi8(static_cast<char>(flip));
    for (; x + 16 <= width; x += 16) {
        __m128i q[4];
        for (int i = 0; i < 4; ++i) q[i] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(quads + (x + 4 * i) * 4));
        for (int p = 0; p < 4; ++p) {
            // Each 32-bit lane is one pixel; its byte p, moved down, fits the packs exactly.
            __m128i lane[4];
            for (int i = 0; i < 4; ++i) lane[i] = _mm_and_si128(_mm_srli_epi32(q[i], 8 * p), low);
            const __m128i words = _mm_packs_epi32(lane[0], lane[1]);
            const __m128i words2 = _mm_packs_epi32(lane[2], lane[3]);
            const __m128i bytes = _mm_xor_si128(_mm_packus_epi16(words, words2), flips);
            _mm_storeu_si128(reinterpret_cast<__m128i*>(plates[p] + x), bytes);
        }
    }
#endif
    for (; x < width; ++x)
        for (int p = 0; p < 4; ++p) plates[p][x] = static_cast<uint8_t>(quads[x * 4 + p] ^ flip);
}

void WidenPlate(const uint8_t* in, size_t width, uint16_t* out, uint16_t flip) {
    size_t x = 0;
#if defined(__SSE2__)
    const __m128i flips = _mm_set1_epi16(static_cast<short>(flip));
    for (; x + 16 <= width; x += 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + x));
        // A byte beside itself is the byte times 257.
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + x), _mm_xor_si128(_mm_unpacklo_epi8(bytes, bytes), flips));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + x + 8),
                         _mm_xor_si128(_mm_unpackhi_epi8(bytes, bytes), flips));
    }
#endif
    for (; x < width; ++x) out[x] = static_cast<uint16_t>(in[x] * 257 ^ flip);
}
