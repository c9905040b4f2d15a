// Packed C, M, Y, K quads split into four plates.
#pragma once
#include <cstddef>
#include <cstdint>

// plates[p][x] = quads[4x + p] ^ flip, for the four plates p.
void SplitQuads(const uint8_t* quads, size_t width, uint8_t* const plates[4], uint8_t flip);

// out[x] = in[x] * 257 ^ flip: an 8-bit plate widened onto 0..65535.
void WidenPlate(const uint8_t* in, size_t width, uint16_t* out, uint16_t flip);
