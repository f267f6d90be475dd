#include "platform/settings/settings_text.h"

#include <gtest/gtest.h>

#include <limits>

#include "platform/settings/memory_settings_store.h"

namespace quarvelo::settings {
namespace {

TEST(SettingsTextTest, NumbersAreWrittenAsShortestText) {
  const struct {
    double value;
    const char* text;
  } cases[] = {
      {3, "3"},     {200, "200"}, {11760, "11760"},
      {-15, "-15"}, {0.5, ".5"},  {20.25, "20.25"},
      {0.1, ".1"},  {-0.0, "0"},  {std::numeric_limits<double>::quiet_NaN(), "0"},
  };
  for (const auto& c : cases) EXPECT_EQ(NumberText(c.value), c.text) << c.value;
  EXPECT_EQ(NumberText(-2147483647), "-2147483647");
  EXPECT_EQ(FlagText(true), "1");
  EXPECT_EQ(FlagText(false), "0");
}

TEST(SettingsTextTest, WrittenNumbersReadBackExactly) {
  MemorySettingsStore store;
  for (double value : {0.1, 20.5, 123456.789, 1e-9, 1e15}) {
    store.Set("FFT", "BWL", NumberText(value));
    EXPECT_EQ(ReadNumber(store, "FFT", "BWL", "0"), value);
  }
}

TEST(SettingsTextTest, ReadsAreLenientAndDefaultWhenMissing) {
  MemorySettingsStore store;
  store.Set("Setup", "Height", "abc");
  store.Set("FFT", "Algo", "x");
  store.Set("FFT", "BWL", "200.");
  store.Set("FFT", "AVG", " 3 passes");
  store.Set("Setup", "DVM", "1.0");
  store.Set("Setup", "WGEN", "yes");
  EXPECT_EQ(ReadInteger(store, "Setup", "Height", "11760"), 0);
  EXPECT_EQ(ReadInteger(store, "FFT", "Algo", "2"), 0);
  EXPECT_EQ(ReadNumber(store, "FFT", "BWL", "0"), 200.0);
  EXPECT_EQ(ReadInteger(store, "FFT", "AVG", "0"), 3);
  EXPECT_EQ(ReadInteger(store, "Setup", "Width", "14580"), 14580);
  EXPECT_TRUE(ReadFlag(store, "Setup", "DVM", "0"));
  EXPECT_FALSE(ReadFlag(store, "Setup", "WGEN", "0"));
  EXPECT_FALSE(ReadFlag(store, "FFT", "BW", "0"));
  EXPECT_TRUE(ReadFlag(store, "FFT", "BW", "1"));
}

}  // namespace
}  // namespace quarvelo::settings
