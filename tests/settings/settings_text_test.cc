#include "platform/settings/settings_text.h"

#include <gtest/gtest.h>

#include "platform/settings/memory_settings_store.h"

namespace quarvelo::settings {
namespace {

// Numbers of type double are written by the text layer's NumberText (see its tests).
TEST(SettingsTextTest, WholeNumbersAndFlagsAreWrittenAsShortestText) {
  EXPECT_EQ(NumberText(-2147483647), "-2147483647");
  EXPECT_EQ(NumberText(0.5), ".5");
  EXPECT_EQ(FlagText(true) + FlagText(false), "10");
}

TEST(SettingsTextTest, ReadsAreLenientAndDefaultWhenMissing) {
  MemorySettingsStore store;
  store.Set("Setup", "Height", "abc");
  store.Set("FFT", "BWL", "200.");
  store.Set("FFT", "AVG", " 3 passes");
  store.Set("Setup", "DVM", "1.0");
  store.Set("Setup", "WGEN", "yes");
  EXPECT_EQ(ReadInteger(store, "Setup", "Height", "11760"), 0);
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
