// Command headers as the instrument's documentation writes them — ":TRIGger[:EDGE]:LEVel",
// ":CHANnel#C:SCALe" — matched against a parsed header: long or short form of each mnemonic,
// optional nodes, and numeric suffixes within the instrument's ranges.
#ifndef QUARVELO_SIM_SCPI_HEADER_PATTERN_H_
#define QUARVELO_SIM_SCPI_HEADER_PATTERN_H_

#include <string>
#include <string_view>
#include <vector>

#include "sim/scpi/program_message.h"

namespace quarvelo::sim {

// Upper bounds of the instance suffixes; an absent suffix means 1.
struct SuffixLimits {
  int channels = 4;    // #C
  int functions = 2;   // #F  math functions
  int generators = 2;  // #W  waveform generators
};

enum class MatchResult { kNoMatch, kMatch, kSuffixOutOfRange };

class HeaderPattern {
 public:
  // `pattern` nodes: "CHANnel#C" (instance suffix), "SOURce#2" (1 or 2), "[EDGE]" (optional).
  explicit HeaderPattern(std::string_view pattern);

  // On a match, `instances` receives the suffix of each suffixed node in pattern order.
  MatchResult Match(const std::vector<HeaderNode>& nodes, const SuffixLimits& limits,
                    std::vector<int>* instances) const;

  const std::string& text() const { return text_; }

 private:
  struct Node {
    std::string long_form;   // upper case
    std::string short_form;  // upper case
    char suffix_kind = 0;    // 0, 'C', 'F', 'W', '2'
    int fixed_suffix = -1;   // "SOURce1": this suffix only (absent counts as 1)
    bool optional = false;
  };
  MatchResult MatchFrom(size_t pattern_index, size_t node_index,
                        const std::vector<HeaderNode>& nodes, const SuffixLimits& limits,
                        std::vector<int>* instances) const;

  std::string text_;
  std::vector<Node> nodes_;
};

// True when `word` (any case) is the long or the short form of `mnemonic` ("CHANnel").
bool MnemonicMatches(std::string_view mnemonic, std::string_view word);
// The short form of a mnemonic: its upper-case letters ("SINusoid" -> "SIN").
std::string ShortForm(std::string_view mnemonic);

}  // namespace quarvelo::sim

#endif  // QUARVELO_SIM_SCPI_HEADER_PATTERN_H_
