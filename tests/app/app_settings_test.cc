#include "app/app_settings.h"

#include <gtest/gtest.h>

#include "platform/settings/memory_settings_store.h"
#include "tests/link/fields.h"

namespace quarvelo::app {
namespace {

using quarvelo::testing_support::Fields;
using settings::MemorySettingsStore;

TEST(AppSettingsTest, EmptyStoreGivesTheDefaults) {
  const AppSettings s = LoadAppSettings(MemorySettingsStore());
  EXPECT_EQ(Fields(s.Address, s.HasDvm, s.HasWgen, s.WindowIndex, s.SpectrumUnit, s.AutoAlgorithm),
            "|0|0|6|0|0|");
  for (int n = 1; n <= kMacroCount; ++n) {
    const Macro& m = s.Macros[static_cast<std::size_t>(n)];
    EXPECT_EQ(Fields(m.Caption, m.Command1, m.Command2, m.SweepAfter),
              Fields("MAC" + std::to_string(n), "", "", false));
  }
}

struct StoredCase {
  const char* section;
  const char* key;
  const char* text;
  // Reads the field under test as a double.
  double (*field)(const AppSettings&);
  double expected;
};

class StoredValueTest : public testing::TestWithParam<StoredCase> {};

TEST_P(StoredValueTest, IsReadLeniently) {
  const StoredCase& c = GetParam();
  MemorySettingsStore store;
  store.Set(c.section, c.key, c.text);
  EXPECT_EQ(c.field(LoadAppSettings(store)), c.expected) << c.key << " = \"" << c.text << "\"";
}

double Height(const AppSettings& s) { return s.Height; }
double Top(const AppSettings& s) { return s.Top; }
double Algorithm(const AppSettings& s) { return s.Algorithm; }
double UpperLimit(const AppSettings& s) { return s.UpperLimitMhz; }
double AverageCount(const AppSettings& s) { return s.AverageCount; }
double AverageExponent(const AppSettings& s) { return control::AverageExponent(s); }
double Window(const AppSettings& s) { return s.WindowIndex; }
double Unit(const AppSettings& s) { return s.SpectrumUnit; }
double Dvm(const AppSettings& s) { return s.HasDvm ? 1 : 0; }
double Wgen(const AppSettings& s) { return s.HasWgen ? 1 : 0; }
double Bw(const AppSettings& s) { return s.BandwidthLimitOn ? 1 : 0; }
double Auto(const AppSettings& s) { return s.AutoAlgorithm ? 1 : 0; }

INSTANTIATE_TEST_SUITE_P(
    Table, StoredValueTest,
    testing::Values(
        StoredCase{"Setup", "Height", "abc", Height, 0},
        StoredCase{"Setup", "Height", "9000", Height, 9000},
        StoredCase{"Setup", "Top", "-1500", Top, -1500},
        StoredCase{"Setup", "Top", "1500.5", Top, 1500},  // halves to even
        StoredCase{"FFT", "Algo", "x", Algorithm, 0}, StoredCase{"FFT", "Algo", "3", Algorithm, 3},
        StoredCase{"FFT", "BWL", "5", UpperLimit, 20},
        StoredCase{"FFT", "BWL", "abc", UpperLimit, 20},
        StoredCase{"FFT", "BWL", "20", UpperLimit, 20},
        StoredCase{"FFT", "BWL", "75.5", UpperLimit, 75.5},
        StoredCase{"FFT", "BWL", "1e999", UpperLimit, 200},
        StoredCase{"FFT", "AVG", "3", AverageCount, 8},
        StoredCase{"FFT", "AVG", "4", AverageCount, 16},
        StoredCase{"FFT", "AVG", "99", AverageExponent, 4},
        StoredCase{"FFT", "AVG", "-2", AverageCount, 1},
        StoredCase{"FFT", "Window", "2", Window, 2}, StoredCase{"FFT", "Window", "12", Window, 6},
        StoredCase{"FFT", "SCALE", "2", Unit, 2}, StoredCase{"FFT", "SCALE", "junk", Unit, 0},
        StoredCase{"Setup", "DVM", "1", Dvm, 1}, StoredCase{"Setup", "DVM", "2", Dvm, 0},
        StoredCase{"Setup", "WGEN", "1", Wgen, 1}, StoredCase{"FFT", "BW", "1", Bw, 1},
        StoredCase{"FFT", "Auto", "1", Auto, 1}, StoredCase{"FFT", "Auto", "on", Auto, 0}),
    [](const testing::TestParamInfo<StoredCase>& info) {
      return std::string(info.param.key) + "_" + std::to_string(info.index);
    });

// The keys it is stored under: ToolbarWindowTest.MacroTenStoresItsKeysAndRunsUnchanged.
TEST(AppSettingsTest, MacroTenIsReadBackFromItsTwoDigitKeysAndAnEmptyCaptionStaysEmpty) {
  MemorySettingsStore store;
  SaveMacro(store, 10, {":RUN", ":STOP", "Go", true});
  store.Set("Macros", "Caption3", "");
  const AppSettings s = LoadAppSettings(store);
  const Macro& m = s.Macros[10];
  EXPECT_EQ(
      Fields(store.size(), m.Command1, m.Command2, m.Caption, m.SweepAfter, s.Macros[3].Caption),
      "5|:RUN|:STOP|Go|1||");
}

}  // namespace
}  // namespace quarvelo::app
