#include "conversion/HighByteReduction.h"

#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

void ReduceToHighBytes(const uint16_t* in, uint8_t* out, size_t count) {
    size_t i = 0;
#if defined(__SSE2__)
    for (; i + 32 <= count; i += 32) {
        __m128i a = _mm_srli_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(in + i)), 8);
        __m128i b = _mm_srli_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(in + i + 8)), 8);
        __m128i c = _mm_srli_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(in + i + 16)), 8);
        __m128i d = _mm_srli_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(in + i + 24)), 8);
        // After the shift every lane is below 256, so the saturating pack is exact.
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), _mm_packus_epi16(a, b));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i + 16), _mm_packus_epi16(c, d));
    }
#endif
    for (; i < count; ++i) out[i] = static_cast<uint8_t>(in[i] >> 8);
}
