#include "sim/status/error_queue.h"

#include "sim/scpi/number_text.h"

namespace quarvelo::sim {

const char* ErrorText(int number) {
  switch (number) {
    case 0:
      return "No error";
    case -100:
      return "Command error";
    case -101:
      return "Invalid character";
    case -102:
      return "Syntax error";
    case -103:
      return "Invalid separator";
    case -104:
      return "Data type error";
    case -108:
      return "Parameter not allowed";
    case -109:
      return "Missing parameter";
    case -112:
      return "Program mnemonic too long";
    case -113:
      return "Undefined header";
    case -114:
      return "Header suffix out of range";
    case -120:
      return "Numeric data error";
    case -121:
      return "Invalid character in number";
    case -124:
      return "Too many digits";
    case -131:
      return "Invalid suffix";
    case -141:
      return "Invalid character data";
    case -151:
      return "Invalid string data";
    case -158:
      return "String data not allowed";
    case -200:
      return "Execution error";
    case -221:
      return "Settings conflict";
    case -222:
      return "Data out of range";
    case -223:
      return "Too much data";
    case -224:
      return "Illegal parameter value";
    case -241:
      return "Hardware missing";
    case -350:
      return "Queue overflow";
    case -400:
      return "Query error";
    case -410:
      return "Query INTERRUPTED";
    case -420:
      return "Query UNTERMINATED";
    default:
      return "";
  }
}

void ErrorQueue::Push(int number) { Push(number, ErrorText(number)); }

void ErrorQueue::Push(int number, const std::string& text) {
  if (entries_.size() >= kCapacity) {
    entries_.back() = Entry{-350, ErrorText(-350)};
    return;
  }
  if (entries_.size() + 1 == kCapacity) {
    entries_.push_back(Entry{-350, ErrorText(-350)});
    return;
  }
  entries_.push_back(Entry{number, text});
}

std::string ErrorQueue::Pop() {
  if (entries_.empty()) return "+0,\"No error\"";
  Entry entry = entries_.front();
  entries_.pop_front();
  return FormatNr1(entry.number) + ",\"" + entry.text + "\"";
}

}  // namespace quarvelo::sim
