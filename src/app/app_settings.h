// The persisted settings: application "QUARVELO", sections "Setup", "FFT" and "Macros", every
// value text. Numbers are written as their shortest text and read leniently (0 for text that
// is not a number); a missing key reads as its default.
#ifndef QUARVELO_APP_APP_SETTINGS_H_
#define QUARVELO_APP_APP_SETTINGS_H_

#include <array>
#include <string>
#include <string_view>

#include "control/spectrum_choices.h"
#include "platform/settings/settings_store.h"

namespace quarvelo::app {

namespace keys {
inline constexpr std::string_view kSetup = "Setup";
inline constexpr std::string_view kFft = "FFT";
inline constexpr std::string_view kMacros = "Macros";

inline constexpr std::string_view kTop = "Top";
inline constexpr std::string_view kLeft = "Left";
inline constexpr std::string_view kHeight = "Height";
inline constexpr std::string_view kWidth = "Width";
inline constexpr std::string_view kVisa = "VISA";
inline constexpr std::string_view kDso = "DSO";
inline constexpr std::string_view kChannels = "Channels";
inline constexpr std::string_view kDvm = "DVM";
inline constexpr std::string_view kWgen = "WGEN";
inline constexpr std::string_view kWindow = "Window";
inline constexpr std::string_view kAvg = "AVG";
inline constexpr std::string_view kScale = "SCALE";
inline constexpr std::string_view kAuto = "Auto";
inline constexpr std::string_view kAlgo = "Algo";
inline constexpr std::string_view kBwl = "BWL";
inline constexpr std::string_view kBw = "BW";
}  // namespace keys

namespace defaults {
inline constexpr std::string_view kTop = "0";
inline constexpr std::string_view kLeft = "0";
inline constexpr std::string_view kHeight = "11760";
inline constexpr std::string_view kWidth = "14580";
inline constexpr std::string_view kVisa = "";
inline constexpr std::string_view kDso = "0";
inline constexpr std::string_view kChannels = "2";
inline constexpr std::string_view kDvm = "0";
inline constexpr std::string_view kWgen = "0";
inline constexpr std::string_view kWindow = "6";
inline constexpr std::string_view kAvg = "0";
inline constexpr std::string_view kScale = "0";
inline constexpr std::string_view kAuto = "0";
inline constexpr std::string_view kAlgo = "2";
inline constexpr std::string_view kBwl = "200.";
inline constexpr std::string_view kBw = "0";
}  // namespace defaults

inline constexpr int kMacroCount = 10;
// The ID_AVG list holds 2^0 .. 2^4.
inline constexpr int kMaxAverageExponent = control::kMaxAverageExponent;
inline constexpr int kWindowCount = 7;
inline constexpr int kSpectrumUnitCount = 3;
inline constexpr double kMinimumUpperLimitMhz = 20;

// One user-programmable button.
struct Macro {
  std::string Command1;
  std::string Command2;
  std::string Caption;
  bool SweepAfter = false;
};

// The settings read at start-up. Model and channel count are not here: the toolbar rebuild and
// the settings dialog read them from the store each time. The "FFT" section is the base, the
// user's spectrum choices: the one record the combo dispatcher writes and the spectrum
// computation, the toolbar rebuild and the shutdown read.
struct AppSettings : control::SpectrumChoices {
  // Window geometry in twips; a height or width of 0 is not applied.
  int Top = 0;
  int Left = 0;
  int Height = 11760;
  int Width = 14580;

  std::string Address;  // "VISA"
  bool HasDvm = false;
  bool HasWgen = false;

  std::array<Macro, kMacroCount + 1> Macros;  // index 1..10; 0 unused
};

AppSettings LoadAppSettings(const settings::SettingsStore& store);
Macro LoadMacro(const settings::SettingsStore& store, int n);
void SaveMacro(settings::SettingsStore& store, int n, const Macro& macro);

// The keys of macro n: "Caption3", "Command1_3", "Command2_3", "Sweep3".
std::string MacroCaptionKey(int n);
std::string MacroCommand1Key(int n);
std::string MacroCommand2Key(int n);
std::string MacroSweepKey(int n);

// The upper limit as the entry box shows it and the store keeps it ("200", "20.5").
std::string UpperLimitText(double megahertz);

}  // namespace quarvelo::app

#endif  // QUARVELO_APP_APP_SETTINGS_H_
