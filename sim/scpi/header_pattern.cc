#include "sim/scpi/header_pattern.h"

#include <cctype>
#include <cstdlib>

namespace quarvelo::sim {
namespace {

std::string Upper(std::string_view text) {
  std::string out(text);
  for (char& c : out) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return out;
}

int SuffixLimit(char kind, const SuffixLimits& limits) {
  switch (kind) {
    case 'C':
      return limits.channels;
    case 'F':
      return limits.functions;
    case 'W':
      return limits.generators;
    case '2':
      return 2;
    default:
      return 1;
  }
}

}  // namespace

std::string ShortForm(std::string_view mnemonic) {
  std::string out;
  for (char c : mnemonic) {
    if (std::isupper(static_cast<unsigned char>(c)) ||
        std::isdigit(static_cast<unsigned char>(c))) {
      out.push_back(c);
    }
  }
  return out.empty() ? Upper(mnemonic) : out;
}

bool MnemonicMatches(std::string_view mnemonic, std::string_view word) {
  std::string upper = Upper(word);
  return upper == Upper(mnemonic) || upper == ShortForm(mnemonic);
}

HeaderPattern::HeaderPattern(std::string_view pattern) : text_(pattern) {
  // "[" opens an optional node ("TRIGger[:EDGE]:LEVel"), "]" closes it, ":" separates nodes.
  Node node;
  std::string name;
  auto finish = [&] {
    if (name.empty()) return;
    size_t hash = name.find('#');
    if (hash != std::string::npos) {
      node.suffix_kind = hash + 1 < name.size() ? name[hash + 1] : 'C';
      name.resize(hash);
    } else if (size_t digits = name.find_first_of("0123456789"); digits != std::string::npos) {
      node.fixed_suffix = std::atoi(name.c_str() + digits);
      name.resize(digits);
    }
    node.long_form = Upper(name);
    node.short_form = ShortForm(name);
    nodes_.push_back(node);
    node = Node{};
    name.clear();
  };
  for (char c : pattern) {
    if (c == ':' || c == ']') {
      finish();
    } else if (c == '[') {
      finish();
      node.optional = true;
    } else {
      name.push_back(c);
    }
  }
  finish();
}

MatchResult HeaderPattern::Match(const std::vector<HeaderNode>& nodes, const SuffixLimits& limits,
                                 std::vector<int>* instances) const {
  instances->clear();
  return MatchFrom(0, 0, nodes, limits, instances);
}

MatchResult HeaderPattern::MatchFrom(size_t pattern_index, size_t node_index,
                                     const std::vector<HeaderNode>& nodes,
                                     const SuffixLimits& limits,
                                     std::vector<int>* instances) const {
  if (pattern_index == nodes_.size()) {
    return node_index == nodes.size() ? MatchResult::kMatch : MatchResult::kNoMatch;
  }
  const Node& expected = nodes_[pattern_index];
  MatchResult result = MatchResult::kNoMatch;
  if (node_index < nodes.size()) {
    const HeaderNode& node = nodes[node_index];
    if (node.name == expected.long_form || node.name == expected.short_form) {
      int suffix = node.suffix < 0 ? 1 : node.suffix;
      bool suffix_ok = true;
      if (expected.fixed_suffix >= 0) {
        if (suffix != expected.fixed_suffix) return MatchResult::kNoMatch;
      } else if (expected.suffix_kind == 0) {
        suffix_ok = node.suffix < 0;
        if (!suffix_ok) return MatchResult::kNoMatch;
      } else {
        suffix_ok = suffix >= 1 && suffix <= SuffixLimit(expected.suffix_kind, limits);
      }
      size_t mark = instances->size();
      if (expected.suffix_kind != 0) instances->push_back(suffix);
      result = MatchFrom(pattern_index + 1, node_index + 1, nodes, limits, instances);
      if (result == MatchResult::kMatch && !suffix_ok) result = MatchResult::kSuffixOutOfRange;
      if (result == MatchResult::kMatch || result == MatchResult::kSuffixOutOfRange) return result;
      instances->resize(mark);
    }
  }
  if (expected.optional) {
    size_t mark = instances->size();
    if (expected.suffix_kind != 0) instances->push_back(1);
    result = MatchFrom(pattern_index + 1, node_index, nodes, limits, instances);
    if (result != MatchResult::kNoMatch) return result;
    instances->resize(mark);
  }
  return MatchResult::kNoMatch;
}

}  // namespace quarvelo::sim
