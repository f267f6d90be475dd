// A 5 x 7 pixel font for the screen's readouts: digits, capitals, the unit letters and a few
// signs. Each glyph is seven rows, bit 4 the leftmost pixel.
#ifndef QUARVELO_SIM_IMAGE_GLYPHS_H_
#define QUARVELO_SIM_IMAGE_GLYPHS_H_

#include <array>
#include <cstdint>

namespace quarvelo::sim {

using Glyph = std::array<std::uint8_t, 7>;

// The glyph of `c`; lower-case letters without a glyph of their own use the capital's, unknown
// characters are blank.
const Glyph& GlyphOf(char c);

}  // namespace quarvelo::sim

#endif  // QUARVELO_SIM_IMAGE_GLYPHS_H_
