// The seven window functions of the spectrum computation.
#ifndef QUARVELO_SPECTRUM_WINDOW_FUNCTION_H_
#define QUARVELO_SPECTRUM_WINDOW_FUNCTION_H_

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace quarvelo::spectrum {

inline constexpr int kWindowCount = 7;
inline constexpr int kHanningWindow = 6;

// `WindowIndex` 0..6 as the tool `ID_Window` lists them.
inline constexpr std::array<std::string_view, kWindowCount> kWindowNames = {
    "None", "Hamming", "Blackman", "Blanckman-Harris", "Blanckman-Nuttal", "Flat-Top", "Hanning"};

// The weight of window `window_index` at sample i of a span of m + 1 samples (i = 0..m), with
// c_k = cos(two_pi k i / (m - 1)). Nothing for a span too short to define the cosines (the
// rectangular window excepted). An index outside 0..6 is taken as the default, Hanning.
std::optional<double> WindowWeight(int window_index, std::int64_t i, std::int64_t m, double two_pi);

// weights[i] = WindowWeight(window_index, i, m, two_pi) for every i of `weights`, or 0 where
// that gives nothing; equal to it within a few units in the last place, at a small fraction
// of the cost of one cosine per sample and window term.
void FillWindowWeights(int window_index, std::int64_t m, double two_pi, std::span<double> weights);

}  // namespace quarvelo::spectrum

#endif  // QUARVELO_SPECTRUM_WINDOW_FUNCTION_H_
