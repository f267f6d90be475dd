#include "platform/settings/memory_settings_store.h"

#include <gtest/gtest.h>

namespace quarvelo::settings {
namespace {

TEST(MemorySettingsStoreTest, MissingKeysReadAsDefaultAndSectionsAreSeparate) {
  MemorySettingsStore store;
  EXPECT_EQ(store.Get("Setup", "Height", "11760"), "11760");
  EXPECT_FALSE(store.Find("Setup", "Height").has_value());
  store.Set("Setup", "Channels", "4");
  store.Set("FFT", "Channels", "x");
  store.Set("Setup", "VISA", "");
  EXPECT_EQ(store.Get("Setup", "Channels", "2"), "4");
  EXPECT_EQ(store.Get("FFT", "Channels", "2"), "x");
  EXPECT_EQ(store.Get("Setup", "VISA", "default"), "");  // a stored empty text is a value
  EXPECT_EQ(store.size(), 3u);
  store.Remove("Setup", "VISA");
  EXPECT_EQ(store.Get("Setup", "VISA", "default"), "default");
  EXPECT_EQ(store.writes(), 3);
}

}  // namespace
}  // namespace quarvelo::settings
