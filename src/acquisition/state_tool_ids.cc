#include "acquisition/state_tool_ids.h"

#include <array>
#include <cmath>

#include "acquisition/scope_state.h"

namespace quarvelo::acquisition {
namespace {

std::string WithFirstLetter(std::string_view prefix, std::string_view mnemonic) {
  if (mnemonic.empty()) return {};
  std::string id(prefix);
  id += mnemonic.front();
  return id;
}

std::string WithNumber(std::string_view prefix, int number, int highest) {
  if (number < 1 || number > highest) return {};
  return std::string(prefix) + std::to_string(number);
}

}  // namespace

std::string TriggerSourceToolId(std::string_view trigger_source, int trigger_channel) {
  const std::string_view head = trigger_source.substr(0, 3);
  if (head == "DIG") return "ID_TGDIG";
  if (head == "EXT") return "ID_TGEXT";
  if (head == "LIN") return "ID_TGLINE";
  if (head == "WGE") return "ID_TGWAV";
  return WithNumber("ID_TG", trigger_channel, kMaxChannels);
}

std::string TriggerSweepToolId(int trigger_sweep_auto) {
  return trigger_sweep_auto == 1 ? "ID_TGSA" : "ID_TGSN";
}

std::string TriggerSlopeToolId(std::string_view slope) { return WithFirstLetter("ID_TS", slope); }
std::string TriggerCouplingToolId(std::string_view coupling) {
  return WithFirstLetter("ID_TC", coupling);
}
std::string TriggerRejectToolId(std::string_view reject) {
  return WithFirstLetter("ID_TJ", reject);
}
std::string TimebaseReferenceToolId(std::string_view reference) {
  return WithFirstLetter("ID_TR", reference);
}
std::string TimebaseModeToolId(std::string_view mode) { return WithFirstLetter("ID_TM", mode); }

std::string AcquireTypeToolId(std::string_view acquire_type) {
  if (acquire_type.empty()) return {};
  return "ID_ACQU" + std::string(acquire_type.substr(0, 4));
}

std::string PersistenceToolId(std::string_view persistence_reply) {
  if (persistence_reply == "INF" || persistence_reply == "MIN") {
    return "ID_PERS" + std::string(persistence_reply);
  }
  return "ID_PERSVAR";
}

std::string ChannelToolId(int channel) { return WithNumber("ID_CH", channel, kMaxChannels); }

std::string MeasureSourceToolId(std::string_view measure_source) {
  static constexpr std::array<std::string_view, 8> kSources = {"CHAN1", "CHAN2", "CHAN3", "CHAN4",
                                                               "EXT",   "WMEM1", "WMEM2", "FUNC"};
  const std::string_view first = measure_source.substr(0, measure_source.find(','));
  for (std::string_view source : kSources) {
    if (first == source) return "ID_MEAS" + std::string(first);
  }
  return {};
}

std::string MathOperationToolId(std::string_view math_operation) {
  static constexpr std::array<std::string_view, 5> kOperations = {"ADD", "SUBT", "MULT", "DIV",
                                                                  "FFT"};
  for (std::string_view operation : kOperations) {
    if (math_operation == operation) return "ID_MATH" + std::string(operation);
  }
  return {};
}

std::string MathPrefixToolId(std::string_view math_prefix) {
  if (math_prefix.empty()) return {};
  if (math_prefix.front() == ':') math_prefix.remove_prefix(1);
  return "ID_MATH" + std::string(math_prefix);
}

std::string DvmModeToolId(int dvm_mode) { return WithNumber("ID_DVMM", dvm_mode, 4); }
std::string DvmSourceToolId(int dvm_source) {
  return WithNumber("ID_DVMCH", dvm_source, kMaxChannels);
}

std::string WgenPrefixToolId(std::string_view wgen_prefix) {
  constexpr std::size_t kSuffixStart = 5;  // after ":WGEN"
  if (wgen_prefix.size() < kSuffixStart) return {};
  return "ID_WGEN" + std::string(wgen_prefix.substr(kSuffixStart));
}

std::string VoltsPerDivToolId(double scale_volts) {
  for (double millivolts : kVoltsPerDivMillivolts) {
    if (std::abs(millivolts / 1000 - scale_volts) <= millivolts * 1e-9) {
      return "ID_" + std::to_string(static_cast<int>(millivolts));
    }
  }
  return {};
}

}  // namespace quarvelo::acquisition
