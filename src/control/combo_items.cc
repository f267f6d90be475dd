#include "control/combo_items.h"

#include <algorithm>
#include <iterator>

namespace quarvelo::control {
namespace {

// Averaging counts 2^index.
constexpr std::string_view kAverage[] = {"1", "2", "4", "8", "16"};
// In the order of the spectrum's window index.
constexpr std::string_view kWindow[] = {
    "None", "Hamming", "Blackman", "Blanckman-Harris", "Blanckman-Nuttal", "Flat-Top", "Hanning",
};
// 256 * 2^index points; the fifth text has always read "4906" although it selects 4096.
constexpr std::string_view kBins[] = {
    "256",   "512",   "1024",  "2048",   "4906",   "8192",
    "16384", "32768", "65536", "131072", "262144", "524288",
};
// In the order of the spectrum unit: dBV, dBm, V RMS.
constexpr std::string_view kScale[] = {"dbV", "dBm", "V RMS"};

constexpr ComboDefinition kCombos[] = {
    {"ID_AVG", kAverage, ""},    {"ID_Window", kWindow, "Hanning"},
    {"ID_Bins", kBins, "65536"}, {"ID_Scale", kScale, "dbV"},
    {"ID_TB", {}, ""},
};

}  // namespace

std::span<const ComboDefinition> Combos() { return kCombos; }

const ComboDefinition* FindCombo(std::string_view id) {
  auto it = std::find_if(std::begin(kCombos), std::end(kCombos),
                         [id](const ComboDefinition& combo) { return combo.id == id; });
  return it == std::end(kCombos) ? nullptr : &*it;
}

}  // namespace quarvelo::control
