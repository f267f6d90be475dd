#include "sim/scpi/program_message.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>

namespace quarvelo::sim {
namespace {

constexpr size_t kMaxMnemonicLength = 12;

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

std::string_view Trim(std::string_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  return text;
}

// Length of a definite block starting at text[0] == '#', or 0 when it is not one.
size_t BlockLength(std::string_view text) {
  if (text.size() < 2 || text[0] != '#' || !std::isdigit(static_cast<unsigned char>(text[1]))) {
    return 0;
  }
  size_t digits = static_cast<size_t>(text[1] - '0');
  if (digits == 0) return text.size();  // indefinite: runs to the end of the message
  if (text.size() < 2 + digits) return text.size();
  size_t length = std::strtoul(std::string(text.substr(2, digits)).c_str(), nullptr, 10);
  return std::min(text.size(), 2 + digits + length);
}

// Splits at `separator` outside quotes and blocks.
std::vector<std::string_view> SplitOutside(std::string_view text, char separator) {
  std::vector<std::string_view> parts;
  size_t start = 0;
  char quote = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    char c = text[i];
    if (quote != 0) {
      if (c == quote) quote = 0;
      continue;
    }
    if (c == '"' || c == '\'') {
      quote = c;
    } else if (c == '#' && i + 1 < text.size() &&
               std::isdigit(static_cast<unsigned char>(text[i + 1]))) {
      size_t length = BlockLength(text.substr(i));
      if (length > 0) i += length - 1;
    } else if (c == separator) {
      parts.push_back(text.substr(start, i - start));
      start = i + 1;
    }
  }
  parts.push_back(text.substr(start));
  return parts;
}

int ParseNode(std::string_view text, HeaderNode* node) {
  if (text.empty()) return -102;
  size_t i = 0;
  while (i < text.size() && (std::isalpha(static_cast<unsigned char>(text[i])) || text[i] == '_')) {
    ++i;
  }
  if (i == 0) return -102;
  if (i > kMaxMnemonicLength) return -112;
  node->name.clear();
  for (size_t k = 0; k < i; ++k) {
    node->name.push_back(static_cast<char>(std::toupper(static_cast<unsigned char>(text[k]))));
  }
  if (i < text.size()) {
    std::string_view digits = text.substr(i);
    for (char c : digits) {
      if (!std::isdigit(static_cast<unsigned char>(c))) return -101;
    }
    if (digits.size() > 6) return -114;
    node->suffix = std::atoi(std::string(digits).c_str());
  }
  return 0;
}

bool ParseParameter(std::string_view raw, ScpiParameter* parameter) {
  std::string_view text = Trim(raw);
  if (text.empty()) return false;
  if (text.front() == '"' || text.front() == '\'') {
    char quote = text.front();
    parameter->kind = ScpiParameter::Kind::kString;
    std::string value;
    size_t i = 1;
    bool closed = false;
    while (i < text.size()) {
      if (text[i] == quote) {
        // A doubled quote stands for one quote character inside the string.
        if (i + 1 < text.size() && text[i + 1] == quote) {
          value.push_back(quote);
          i += 2;
          continue;
        }
        closed = true;
        ++i;
        break;
      }
      value.push_back(text[i++]);
    }
    if (!closed || i != text.size()) return false;
    parameter->text = value;
    return true;
  }
  if (text.front() == '#' && text.size() > 1 && std::isdigit(static_cast<unsigned char>(text[1]))) {
    parameter->kind = ScpiParameter::Kind::kBlock;
    size_t digits = static_cast<size_t>(text[1] - '0');
    parameter->text = std::string(text.substr(std::min(text.size(), 2 + digits)));
    return true;
  }
  parameter->kind = ScpiParameter::Kind::kText;
  parameter->text = std::string(text);
  return true;
}

ScpiCommand ParseCommand(std::string_view text, const std::vector<HeaderNode>& context) {
  ScpiCommand command;
  text = Trim(text);
  size_t header_end = 0;
  while (header_end < text.size() && !IsBlank(text[header_end])) ++header_end;
  std::string_view header = text.substr(0, header_end);
  std::string_view arguments = text.substr(header_end);
  command.header = std::string(header);
  if (!header.empty() && header.back() == '?') {
    command.query = true;
    header.remove_suffix(1);
  }
  if (!header.empty() && header.front() == '*') {
    command.common = true;
    HeaderNode node;
    node.name = "*";
    for (char c : header.substr(1)) {
      if (!std::isalpha(static_cast<unsigned char>(c))) {
        command.error = -102;
        return command;
      }
      node.name.push_back(static_cast<char>(std::toupper(static_cast<unsigned char>(c))));
    }
    command.nodes.push_back(node);
  } else {
    bool absolute = !header.empty() && header.front() == ':';
    if (absolute) header.remove_prefix(1);
    if (!absolute) command.nodes = context;
    for (std::string_view part : SplitOutside(header, ':')) {
      HeaderNode node;
      int error = ParseNode(part, &node);
      if (error != 0) {
        command.error = error;
        return command;
      }
      command.nodes.push_back(node);
    }
  }
  arguments = Trim(arguments);
  if (!arguments.empty()) {
    for (std::string_view raw : SplitOutside(arguments, ',')) {
      ScpiParameter parameter;
      if (!ParseParameter(raw, &parameter)) {
        command.error = Trim(raw).empty() ? -109 : -151;
        return command;
      }
      command.parameters.push_back(std::move(parameter));
    }
  }
  return command;
}

}  // namespace

std::vector<ScpiCommand> ParseProgramMessage(std::string_view message) {
  std::vector<ScpiCommand> commands;
  std::vector<HeaderNode> context;
  std::vector<std::string_view> parts = SplitOutside(message, ';');
  for (size_t i = 0; i < parts.size(); ++i) {
    std::string_view part = parts[i];
    if (Trim(part).empty()) {
      if (i + 1 == parts.size()) break;  // an empty message, or a trailing ";"
      ScpiCommand empty;
      empty.error = -102;
      commands.push_back(empty);
      continue;
    }
    ScpiCommand command = ParseCommand(part, context);
    if (!command.common && command.error == 0 && !command.nodes.empty()) {
      context.assign(command.nodes.begin(), command.nodes.end() - 1);
    }
    commands.push_back(std::move(command));
  }
  return commands;
}

}  // namespace quarvelo::sim
