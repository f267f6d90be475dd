#include "app/app_settings.h"

#include <algorithm>
#include <cmath>

#include "platform/settings/settings_text.h"
#include "platform/text/number_parse.h"

namespace quarvelo::app {

using settings::FlagText;
using settings::ReadFlag;
using settings::ReadInteger;
using settings::ReadNumber;

std::string MacroCaptionKey(int n) { return "Caption" + std::to_string(n); }
std::string MacroCommand1Key(int n) { return "Command1_" + std::to_string(n); }
std::string MacroCommand2Key(int n) { return "Command2_" + std::to_string(n); }
std::string MacroSweepKey(int n) { return "Sweep" + std::to_string(n); }

std::string UpperLimitText(double megahertz) { return settings::NumberText(megahertz); }

Macro LoadMacro(const settings::SettingsStore& store, int n) {
  Macro macro;
  macro.Caption = store.Get(keys::kMacros, MacroCaptionKey(n), "MAC" + std::to_string(n));
  macro.Command1 = store.Get(keys::kMacros, MacroCommand1Key(n), "");
  macro.Command2 = store.Get(keys::kMacros, MacroCommand2Key(n), "");
  macro.SweepAfter = ReadFlag(store, keys::kMacros, MacroSweepKey(n), "0");
  return macro;
}

void SaveMacro(settings::SettingsStore& store, int n, const Macro& macro) {
  store.Set(keys::kMacros, MacroCaptionKey(n), macro.Caption);
  store.Set(keys::kMacros, MacroCommand1Key(n), macro.Command1);
  store.Set(keys::kMacros, MacroCommand2Key(n), macro.Command2);
  store.Set(keys::kMacros, MacroSweepKey(n), FlagText(macro.SweepAfter));
}

AppSettings LoadAppSettings(const settings::SettingsStore& store) {
  AppSettings s;
  s.Top = ReadInteger(store, keys::kSetup, keys::kTop, defaults::kTop);
  s.Left = ReadInteger(store, keys::kSetup, keys::kLeft, defaults::kLeft);
  s.Height = ReadInteger(store, keys::kSetup, keys::kHeight, defaults::kHeight);
  s.Width = ReadInteger(store, keys::kSetup, keys::kWidth, defaults::kWidth);
  s.Address = store.Get(keys::kSetup, keys::kVisa, defaults::kVisa);
  s.HasDvm = ReadFlag(store, keys::kSetup, keys::kDvm, defaults::kDvm);
  s.HasWgen = ReadFlag(store, keys::kSetup, keys::kWgen, defaults::kWgen);

  // Indexes into fixed lists are kept inside their list, so that a hand-edited store cannot
  // make a later step index past an array or ask for 2^1000 averaging passes.
  s.WindowIndex = std::clamp(ReadInteger(store, keys::kFft, keys::kWindow, defaults::kWindow), 0,
                             kWindowCount - 1);
  s.AverageCount = 1 << std::clamp(ReadInteger(store, keys::kFft, keys::kAvg, defaults::kAvg), 0,
                                   kMaxAverageExponent);
  s.SpectrumUnit = std::clamp(ReadInteger(store, keys::kFft, keys::kScale, defaults::kScale), 0,
                              kSpectrumUnitCount - 1);
  s.AutoAlgorithm = ReadFlag(store, keys::kFft, keys::kAuto, defaults::kAuto);
  s.Algorithm = ReadInteger(store, keys::kFft, keys::kAlgo, defaults::kAlgo);
  double upper = ReadNumber(store, keys::kFft, keys::kBwl, defaults::kBwl);
  // "1e999" reads as infinite, which no entry box or store could show again.
  if (!std::isfinite(upper)) upper = text::LeadingNumber(defaults::kBwl);
  s.UpperLimitMhz = std::max(upper, kMinimumUpperLimitMhz);
  s.BandwidthLimitOn = ReadFlag(store, keys::kFft, keys::kBw, defaults::kBw);

  for (int n = 1; n <= kMacroCount; ++n)
    s.Macros[static_cast<std::size_t>(n)] = LoadMacro(store, n);
  return s;
}

}  // namespace quarvelo::app
