// Packed C, M, Y, K quads split into four plates.
#pragma once
#include <cstddef>
#include <cstdint>

// plates[p][x] = quads[4x + p] ^ flip, for the four plates p.
void SplitQuads(const uint8_t* quads, size_t width, uint8_t* const plates[4], uint8_t flip);

// plates[p][x] = quads[4x + p] * 257 ^ flip: 8-bit inks widened onto 0..65535.
void SplitQuadsWide(const uint8_t* quads, size_t width, uint16_t* const plates[4], uint16_t flip);
