// 8-bit pixels through a colour lookup table, interpolated the way lcms2
// interpolates its own precalculated table: tetrahedral in 16.16 fixed point
// over the last three inputs, linear between two such over a fourth. The grid
// is lcms2's: the same size, the same chain evaluated at the same nodes, and
// white patched as lcms2 patches it, so the bytes come out as lcms2's.
#include <immintrin.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>
#include <vector>

#include "eight_bit_path.h"
#include "transform_chain.h"

namespace tesk::mscms {
namespace {

// Nodes hold four 16-bit outputs (the fourth 0 for three), in the byte order
// the output pixel wants, so one 8-byte load fetches a node.
constexpr unsigned kNodeWords = 4;

// The grid lcms2 precalculates for `inputs` channels with these flags.
unsigned GridPoints(cmsUInt32Number flags, unsigned inputs) {
    if (flags & 0x00FF0000) return (flags >> 16) & 0xFF;
    if (flags & cmsFLAGS_HIGHRESPRECALC) return inputs == 4 ? 23 : 49;
    if (flags & cmsFLAGS_LOWRESPRECALC) return 17;
    return inputs == 4 ? 17 : 33;
}

// 16.16 position of an 8-bit value on an axis of `intervals`, as lcms2
// computes it for 16-bit input v * 257.
uint32_t FixedPosition(unsigned value, unsigned intervals) {
    const int64_t scaled = int64_t{value} * 257 * intervals;
    return static_cast<uint32_t>(scaled + (scaled + 0x7FFF) / 0xFFFF);
}

// For each 8-bit value on one axis: the offset of the node below, and the
// fraction towards the next with the step to it (none at a node) packed as
// fraction << 32 | step, so that sorting the words sorts by fraction.
struct Axis {
    uint32_t below[256];
    uint64_t towards[256];
};

Axis MakeAxis(unsigned intervals, uint32_t stride) {
    Axis axis{};
    for (unsigned v = 0; v < 256; ++v) {
        const uint32_t position = FixedPosition(v, intervals);
        const uint32_t fraction = position & 0xFFFF;
        axis.below[v] = (position >> 16) * stride;
        axis.towards[v] = uint64_t{fraction} << 32 | (fraction ? stride : 0);
    }
    return axis;
}

// The corners of the tetrahedron around a point: offsets from the node
// below, and the weights of the three edges walked from it.
struct Tetrahedron {
    uint32_t base, first, second, third;
    uint32_t weight[3];
};

// Larger and smaller of two words by masks, not branches: the order of the
// fractions is as good as random from one pixel to the next.
inline void Order(uint64_t& high, uint64_t& low) {
    const uint64_t swap = (high ^ low) & (uint64_t{0} - uint64_t{high < low});
    high ^= swap;
    low ^= swap;
}

inline Tetrahedron Locate(uint32_t base, uint64_t a, uint64_t b, uint64_t c) {
    uint64_t top = a, middle = b, bottom = c;
    Order(top, middle);
    Order(top, bottom);
    Order(middle, bottom);
    Tetrahedron t;
    t.base = base;
    t.first = base + static_cast<uint32_t>(top);
    t.second = t.first + static_cast<uint32_t>(middle);
    t.third = t.second + static_cast<uint32_t>(bottom);
    t.weight[0] = static_cast<uint32_t>(top >> 32);
    t.weight[1] = static_cast<uint32_t>(middle >> 32);
    t.weight[2] = static_cast<uint32_t>(bottom >> 32);
    return t;
}

struct Clut {
    unsigned inputs = 3;
    PixelBytes in, out;
    std::vector<uint16_t> nodes;
    Axis axes[4];  // lcms2's input channel order; with four, the first is the outer one
};

// ---- SSE2: one pixel at a time, four outputs in the lanes of a register.

inline __m128i Node(const uint16_t* nodes, uint32_t at) {
    return _mm_unpacklo_epi16(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(nodes + at)), _mm_setzero_si128());
}

// Low 32 bits of each lane times `w` (the same in every lane).
inline __m128i MulLow(__m128i a, __m128i w) {
    const __m128i even = _mm_mul_epu32(a, w);
    const __m128i odd = _mm_mul_epu32(_mm_srli_epi64(a, 32), w);
    return _mm_unpacklo_epi32(_mm_shuffle_epi32(even, _MM_SHUFFLE(0, 0, 2, 0)),
                              _mm_shuffle_epi32(odd, _MM_SHUFFLE(0, 0, 2, 0)));
}

// c0 and the weighted sum of the edges, c1 * w1 + c2 * w2 + c3 * w3.
inline __m128i EdgeSum(const uint16_t* nodes, const Tetrahedron& t, uint32_t slice, __m128i& c0) {
    c0 = Node(nodes, t.base + slice);
    const __m128i n1 = Node(nodes, t.first + slice), n2 = Node(nodes, t.second + slice);
    const __m128i n3 = Node(nodes, t.third + slice);
    const __m128i s1 = MulLow(_mm_sub_epi32(n1, c0), _mm_set1_epi32(static_cast<int>(t.weight[0])));
    const __m128i s2 = MulLow(_mm_sub_epi32(n2, n1), _mm_set1_epi32(static_cast<int>(t.weight[1])));
    const __m128i s3 = MulLow(_mm_sub_epi32(n3, n2), _mm_set1_epi32(static_cast<int>(t.weight[2])));
    return _mm_add_epi32(_mm_add_epi32(s1, s2), s3);
}

// lcms2's rounding of three inputs: t = sum + 0x8001, c0 + (t + (t >> 16)) >> 16.
inline __m128i RoundThree(__m128i c0, __m128i sum) {
    const __m128i t = _mm_add_epi32(sum, _mm_set1_epi32(0x8001));
    return _mm_add_epi32(c0, _mm_srai_epi32(_mm_add_epi32(t, _mm_srai_epi32(t, 16)), 16));
}

// lcms2's rounding inside four inputs: to the fixed domain, a + trunc((a +
// 0x7FFF) / 0xFFFF), then to the nearest integer.
inline __m128i RoundFour(__m128i c0, __m128i sum) {
    const __m128i t = _mm_add_epi32(sum, _mm_set1_epi32(0x7FFF));
    const __m128i sign = _mm_srai_epi32(t, 31);
    const __m128i magnitude = _mm_sub_epi32(_mm_xor_si128(t, sign), sign);
    __m128i q = _mm_add_epi32(_mm_add_epi32(magnitude, _mm_srli_epi32(magnitude, 16)), _mm_set1_epi32(1));
    q = _mm_srli_epi32(q, 16);  // magnitude / 0xFFFF for any magnitude below 2^31
    q = _mm_sub_epi32(_mm_xor_si128(q, sign), sign);
    const __m128i fixed = _mm_add_epi32(sum, q);
    const __m128i value = _mm_add_epi32(c0, _mm_srai_epi32(_mm_add_epi32(fixed, _mm_set1_epi32(0x8000)), 16));
    return _mm_and_si128(value, _mm_set1_epi32(0xFFFF));
}

// 16 to 8 bits as lcms2 does: (v * 65281 + 2^23) >> 24, then four bytes.
inline uint32_t ToBytes(__m128i v) {
    v = _mm_and_si128(v, _mm_set1_epi32(0xFFFF));
    const __m128i times = _mm_add_epi32(_mm_sub_epi32(_mm_slli_epi32(v, 16), _mm_slli_epi32(v, 8)), v);
    const __m128i bytes = _mm_srli_epi32(_mm_add_epi32(times, _mm_set1_epi32(0x800000)), 24);
    const __m128i packed = _mm_packs_epi32(bytes, bytes);
    return static_cast<uint32_t>(_mm_cvtsi128_si32(_mm_packus_epi16(packed, packed)));
}

template <Output kind>
void RunThreeSse2(const Clut& clut, const uint8_t* in, uint8_t* out, size_t count) {
    const uint16_t* nodes = clut.nodes.data();
    const Axis &x = clut.axes[0], &y = clut.axes[1], &z = clut.axes[2];
    const unsigned ox = clut.in.offsets[0], oy = clut.in.offsets[1], oz = clut.in.offsets[2];
    for (size_t i = 0; i < count; ++i, in += clut.in.size, out += clut.out.size) {
        const unsigned r = in[ox], g = in[oy], b = in[oz];
        const Tetrahedron t = Locate(x.below[r] + y.below[g] + z.below[b], x.towards[r], y.towards[g], z.towards[b]);
        __m128i c0;
        const __m128i sum = EdgeSum(nodes, t, 0, c0);
        Store<kind>(in, out, ToBytes(RoundThree(c0, sum)));
    }
}

template <Output kind>
void RunFourSse2(const Clut& clut, const uint8_t* in, uint8_t* out, size_t count) {
    const uint16_t* nodes = clut.nodes.data();
    const Axis &k = clut.axes[0], &x = clut.axes[1], &y = clut.axes[2], &z = clut.axes[3];
    const unsigned ok = clut.in.offsets[0], ox = clut.in.offsets[1], oy = clut.in.offsets[2];
    const unsigned oz = clut.in.offsets[3];
    for (size_t i = 0; i < count; ++i, in += clut.in.size, out += clut.out.size) {
        const unsigned outer = in[ok], a = in[ox], b = in[oy], c = in[oz];
        const Tetrahedron t = Locate(k.below[outer] + x.below[a] + y.below[b] + z.below[c], x.towards[a],
                                     y.towards[b], z.towards[c]);
        const uint32_t step = static_cast<uint32_t>(k.towards[outer]);
        const int fraction = static_cast<int>(k.towards[outer] >> 32);
        __m128i c0, d0;
        const __m128i sum0 = EdgeSum(nodes, t, 0, c0);
        const __m128i sum1 = EdgeSum(nodes, t, step, d0);
        const __m128i low = RoundFour(c0, sum0), high = RoundFour(d0, sum1);
        // Linear between the two: low + ((high - low) * fraction + 0x8000) >> 16.
        const __m128i diff = MulLow(_mm_sub_epi32(high, low), _mm_set1_epi32(fraction));
        const __m128i v = _mm_add_epi32(low, _mm_srai_epi32(_mm_add_epi32(diff, _mm_set1_epi32(0x8000)), 16));
        Store<kind>(in, out, ToBytes(v));
    }
}

// ---- AVX2: two sets of four lanes per register, two pixels (or, with four
// inputs, both slices of one pixel) per step, and a true 32-bit multiply.

__attribute__((target("avx2"))) inline __m256i NodePair(const uint16_t* nodes, uint32_t a, uint32_t b) {
    const __m128i low = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(nodes + a));
    const __m128i both = _mm_castpd_si128(
        _mm_loadh_pd(_mm_castsi128_pd(low), reinterpret_cast<const double*>(nodes + b)));
    return _mm256_cvtepu16_epi32(both);
}

__attribute__((target("avx2"))) inline __m256i Weights(uint32_t a, uint32_t b) {
    return _mm256_setr_m128i(_mm_set1_epi32(static_cast<int>(a)), _mm_set1_epi32(static_cast<int>(b)));
}

__attribute__((target("avx2"))) inline __m256i EdgeSumPair(const uint16_t* nodes, const Tetrahedron& s,
                                                             uint32_t sliceS, const Tetrahedron& t, uint32_t sliceT,
                                                             __m256i& c0) {
    c0 = NodePair(nodes, s.base + sliceS, t.base + sliceT);
    const __m256i n1 = NodePair(nodes, s.first + sliceS, t.first + sliceT);
    const __m256i n2 = NodePair(nodes, s.second + sliceS, t.second + sliceT);
    const __m256i n3 = NodePair(nodes, s.third + sliceS, t.third + sliceT);
    const __m256i s1 = _mm256_mullo_epi32(_mm256_sub_epi32(n1, c0), Weights(s.weight[0], t.weight[0]));
    const __m256i s2 = _mm256_mullo_epi32(_mm256_sub_epi32(n2, n1), Weights(s.weight[1], t.weight[1]));
    const __m256i s3 = _mm256_mullo_epi32(_mm256_sub_epi32(n3, n2), Weights(s.weight[2], t.weight[2]));
    return _mm256_add_epi32(_mm256_add_epi32(s1, s2), s3);
}

__attribute__((target("avx2"))) inline void ToBytesPair(__m256i v, uint32_t& first, uint32_t& second) {
    v = _mm256_and_si256(v, _mm256_set1_epi32(0xFFFF));
    const __m256i times = _mm256_add_epi32(_mm256_sub_epi32(_mm256_slli_epi32(v, 16), _mm256_slli_epi32(v, 8)), v);
    const __m256i bytes = _mm256_srli_epi32(_mm256_add_epi32(times, _mm256_set1_epi32(0x800000)), 24);
    __m256i packed = _mm256_packs_epi32(bytes, bytes);
    packed = _mm256_packus_epi16(packed, packed);
    first = static_cast<uint32_t>(_mm_cvtsi128_si32(_mm256_castsi256_si128(packed)));
    second = static_cast<uint32_t>(_mm_cvtsi128_si32(_mm256_extracti128_si256(packed, 1)));
}

template <Output kind>
__attribute__((target("avx2"))) void RunThreeAvx2(const Clut& clut, const uint8_t* in, uint8_t* out,
                                                   size_t count) {
    const uint16_t* nodes = clut.nodes.data();
    const Axis &x = clut.axes[0], &y = clut.axes[1], &z = clut.axes[2];
    const unsigned ox = clut.in.offsets[0], oy = clut.in.offsets[1], oz = clut.in.offsets[2];
    const unsigned inSize = clut.in.size, outSize = clut.out.size;
    size_t i = 0;
    for (; i + 2 <= count; i += 2, in += 2 * inSize, out += 2 * outSize) {
        const uint8_t* next = in + inSize;
        const unsigned r0 = in[ox], g0 = in[oy], b0 = in[oz];
        const unsigned r1 = next[ox], g1 = next[oy], b1 = next[oz];
        const Tetrahedron s = Locate(x.below[r0] + y.below[g0] + z.below[b0], x.towards[r0], y.towards[g0],
                                     z.towards[b0]);
        const Tetrahedron t = Locate(x.below[r1] + y.below[g1] + z.below[b1], x.towards[r1], y.towards[g1],
                                     z.towards[b1]);
        __m256i c0;
        const __m256i sum = EdgeSumPair(nodes, s, 0, t, 0, c0);
        const __m256i rounded = _mm256_add_epi32(sum, _mm256_set1_epi32(0x8001));
        const __m256i v = _mm256_add_epi32(
            c0, _mm256_srai_epi32(_mm256_add_epi32(rounded, _mm256_srai_epi32(rounded, 16)), 16));
        // Both pixels were read before either is written, as in place needs.
        uint32_t first, second;
        ToBytesPair(v, first, second);
        Store<kind>(in, out, first);
        Store<kind>(next, out + outSize, second);
    }
    if (i < count) RunThreeSse2<kind>(clut, in, out, count - i);
}

template <Output kind>
__attribute__((target("avx2"))) void RunFourAvx2(const Clut& clut, const uint8_t* in, uint8_t* out,
                                                  size_t count) {
    const uint16_t* nodes = clut.nodes.data();
    const Axis &k = clut.axes[0], &x = clut.axes[1], &y = clut.axes[2], &z = clut.axes[3];
    const unsigned ok = clut.in.offsets[0], ox = clut.in.offsets[1], oy = clut.in.offsets[2];
    const unsigned oz = clut.in.offsets[3];
    for (size_t i = 0; i < count; ++i, in += clut.in.size, out += clut.out.size) {
        const unsigned outer = in[ok], a = in[ox], b = in[oy], c = in[oz];
        const Tetrahedron t = Locate(k.below[outer] + x.below[a] + y.below[b] + z.below[c], x.towards[a],
                                     y.towards[b], z.towards[c]);
        const uint32_t step = static_cast<uint32_t>(k.towards[outer]);
        const int fraction = static_cast<int>(k.towards[outer] >> 32);
        __m256i c0;
        const __m256i sum = EdgeSumPair(nodes, t, 0, t, step, c0);
        const __m128i low = RoundFour(_mm256_castsi256_si128(c0), _mm256_castsi256_si128(sum));
        const __m128i high = RoundFour(_mm256_extracti128_si256(c0, 1), _mm256_extracti128_si256(sum, 1));
        const __m128i diff = _mm_mullo_epi32(_mm_sub_epi32(high, low), _mm_set1_epi32(fraction));
        const __m128i v = _mm_add_epi32(low, _mm_srai_epi32(_mm_add_epi32(diff, _mm_set1_epi32(0x8000)), 16));
        Store<kind>(in, out, ToBytes(v));
    }
}

using Runner = void (*)(const Clut&, const uint8_t*, uint8_t*, size_t);

template <Output kind>
std::pair<Runner, Runner> Runners(unsigned inputs) {  // AVX2, SSE2
    if (inputs == 3) return {RunThreeAvx2<kind>, RunThreeSse2<kind>};
    return {RunFourAvx2<kind>, RunFourSse2<kind>};
}

class ClutPath final : public EightBitPath {
public:
    explicit ClutPath(Clut clut) : clut_(std::move(clut)) {
        switch (OutputKind(clut_.in, clut_.out)) {
        case Output::Three: runners_ = Runners<Output::Three>(clut_.inputs); break;
        case Output::Four: runners_ = Runners<Output::Four>(clut_.inputs); break;
        case Output::ExtraFromInput: runners_ = Runners<Output::ExtraFromInput>(clut_.inputs); break;
        case Output::ExtraKept: runners_ = Runners<Output::ExtraKept>(clut_.inputs); break;
        }
    }
    void Run(const uint8_t* in, uint8_t* out, size_t count) const override {
        (UseAvx2() ? runners_.first : runners_.second)(clut_, in, out, count);
    }

private:
    Clut clut_;
    std::pair<Runner, Runner> runners_;
};

// As lcms2 does for its own table (except for absolute colorimetric): the
// node of input white gives exactly output white, unless it gives something
// far from it in some channel.
void FixWhite(const ChainTransforms& chain, unsigned inputs, unsigned outputs, size_t count,
              std::vector<uint16_t>& table) {
    if (chain.Key().uses.back().intent == INTENT_ABSOLUTE_COLORIMETRIC) return;
    const size_t node = inputs == 3 ? count - 1 : 0;  // RGB white is the last node, CMYK white the first
    const uint16_t white = outputs == 3 ? 0xFFFF : 0;
    uint16_t* values = table.data() + node * outputs;
    for (unsigned c = 0; c < outputs; ++c)
        if (std::abs(int{values[c]} - int{white}) > 0xF000) return;
    std::fill(values, values + outputs, white);
}

cmsUInt32Number SixteenBitFormat(unsigned channels) { return channels == 4 ? TYPE_CMYK_16 : TYPE_RGB_16; }

}  // namespace

std::unique_ptr<EightBitPath> MakeClutPath(ChainTransforms& chain, const PixelBytes& in, const PixelBytes& out) {
    if ((in.channels != 3 && in.channels != 4) || (out.channels != 3 && out.channels != 4)) return nullptr;
    // Unoptimised, lcms2 evaluates the whole chain at each node, as it does
    // when it fills its own table.
    auto sampler = chain.For(SixteenBitFormat(in.channels), SixteenBitFormat(out.channels), nullptr,
                             cmsFLAGS_NOOPTIMIZE);
    if (!sampler) return nullptr;

    Clut clut;
    clut.inputs = in.channels;
    clut.in = in;
    clut.out = out;
    const unsigned points = GridPoints(chain.Key().lcmsFlags, in.channels);
    const unsigned intervals = points - 1;
    size_t count = 1;
    for (unsigned i = 0; i < in.channels; ++i) count *= points;

    // lcms2's node inputs: i * 65535 / intervals, rounded.
    std::vector<uint16_t> onNode(points);
    for (unsigned i = 0; i < points; ++i)
        onNode[i] = static_cast<uint16_t>((uint64_t{65535} * i * 2 + intervals) / (2 * intervals));
    std::vector<uint16_t> inputs(count * in.channels);
    for (size_t node = 0; node < count; ++node) {
        size_t rest = node;
        for (unsigned c = in.channels; c-- > 0; rest /= points) inputs[node * in.channels + c] = onNode[rest % points];
    }
    std::vector<uint16_t> outputs(count * out.channels);
    cmsDoTransform(sampler->Get(), inputs.data(), outputs.data(), static_cast<cmsUInt32Number>(count));
    FixWhite(chain, in.channels, out.channels, count, outputs);

    // Outputs in the order of the pixel's bytes.
    clut.nodes.assign(count * kNodeWords, 0);
    for (size_t node = 0; node < count; ++node)
        for (unsigned c = 0; c < out.channels; ++c)
            clut.nodes[node * kNodeWords + out.offsets[c]] = outputs[node * out.channels + c];

    uint32_t stride = kNodeWords;
    for (unsigned c = in.channels; c-- > 0; stride *= points) clut.axes[c] = MakeAxis(intervals, stride);
    return std::make_unique<ClutPath>(std::move(clut));
}

}  // namespace tesk::mscms
