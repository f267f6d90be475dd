#include "platform/settings/settings_text.h"

#include <gtest/gtest.h>

#include "platform/settings/memory_settings_store.h"

namespace quarvelo::settings {
namespace {

// Numbers of type double are written by the text layer's NumberText (see its tests).
TEST(SettingsTextTest, WholeNumbersAndFlagsAreWrittenAsShortestText) {
  EXPECT_EQ(NumberText(-2147483647), "-2147483647");
  EXPECT_EQ(FlagText(true) + FlagText(false), "10");
}

// Missing keys, junk and flags other than 1 are AppSettingsTest's table, read through the
// program's settings; here the forms it does not store.
TEST(SettingsTextTest, ReadsAreLenient) {
  MemorySettingsStore store;
  store.Set("FFT", "BWL", "200.");
  store.Set("FFT", "AVG", " 3 passes");
  store.Set("Setup", "DVM", "1.0");
  EXPECT_EQ(ReadNumber(store, "FFT", "BWL", "0"), 200.0);
  EXPECT_EQ(ReadInteger(store, "FFT", "AVG", "0"), 3);
  EXPECT_TRUE(ReadFlag(store, "Setup", "DVM", "0"));
  EXPECT_TRUE(ReadFlag(store, "FFT", "BW", "1"));  // the default is read as stored text
}

}  // namespace
}  // namespace quarvelo::settings
