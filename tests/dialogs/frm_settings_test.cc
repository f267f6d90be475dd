#include <gtest/gtest.h>

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

#include "dialogs/frmSettings.h"
#include "platform/settings/memory_settings_store.h"
#include "tests/link/fields.h"

namespace quarvelo::dialogs {
namespace {

using testing_support::Fields;

class FrmSettingsTest : public testing::Test {
 protected:
  std::unique_ptr<frmSettings> Open() {
    return std::make_unique<frmSettings>(
        store_, SettingsDialogRecords{address_, algorithm_, auto_algorithm_, scope_});
  }
  template <typename T>
  static T* Find(const frmSettings& dialog, const char* name, int index = -1) {
    for (T* widget : dialog.findChildren<T*>(QString::fromLatin1(name))) {
      if (index < 0 || widget->property("index").toInt() == index) return widget;
    }
    return nullptr;
  }
  static QRadioButton* Fft(const frmSettings& d, int i) {
    return Find<QRadioButton>(d, "optFFT", i);
  }

  settings::MemorySettingsStore store_;
  std::string address_;
  int algorithm_ = 2;
  bool auto_algorithm_ = false;
  acquisition::ScopeState scope_;
};

// Odd stored texts read safely: a channel count other than 4 is 2, a model out of range none.
TEST_F(FrmSettingsTest, OpeningShowsStoredAndCurrentValues) {
  store_.Set("Setup", "VISA", "USB0::0x0957::0x1797::MY123::0::INSTR");
  scope_.HasDvm = true;
  const struct {
    const char* channels;
    const char* model;
    int count;
    int model_index;
  } cases[] = {{"4.0", "1", 4, 1}, {"3", "5", 2, -1}, {"abc", "-1", 2, -1}, {"", "x", 2, 0}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.channels);
    store_.Set("Setup", "Channels", c.channels);
    store_.Set("Setup", "DSO", c.model);
    scope_.ChannelCount = 6 - c.count;
    auto dialog = Open();
    EXPECT_EQ(scope_.ChannelCount, c.count);
    EXPECT_TRUE(Find<QRadioButton>(*dialog, "optChannels", c.count == 4)->isChecked());
    EXPECT_EQ(Find<QComboBox>(*dialog, "cboDSO")->currentIndex(), c.model_index);
    EXPECT_EQ(Find<QLineEdit>(*dialog, "txtVISA")->text(), "USB0::0x0957::0x1797::MY123::0::INSTR");
    EXPECT_TRUE(Find<QCheckBox>(*dialog, "chkDVM")->isChecked());
    EXPECT_FALSE(Find<QCheckBox>(*dialog, "chkWGEN")->isChecked());
  }
}

// OK with no algorithm selected stores 0.
TEST_F(FrmSettingsTest, AlgorithmSelectionFollowsTheAlgorithmNumberAndOkStoresIt) {
  const struct {
    int algorithm;
    int checked_index;  // -1: none
  } cases[] = {{1, 0}, {2, 1}, {3, 2}, {0, -1}, {7, -1}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.algorithm);
    algorithm_ = c.algorithm;
    auto dialog = Open();
    for (int i = 0; i < 3; ++i) EXPECT_EQ(Fft(*dialog, i)->isChecked(), i == c.checked_index) << i;
    Find<QPushButton>(*dialog, "cmdOk")->click();
    EXPECT_EQ(algorithm_, c.checked_index + 1);
    EXPECT_EQ(store_.Find("FFT", "Algo"), std::to_string(c.checked_index + 1));
  }
}

TEST_F(FrmSettingsTest, AutoDisablesTheSlowerChoicesButNotFftA) {
  auto_algorithm_ = true;
  auto dialog = Open();
  auto* automatic = Find<QCheckBox>(*dialog, "chkAuto");
  for (const bool on : {true, false, true}) {  // as opened, then clicked twice
    EXPECT_EQ(automatic->isChecked(), on);
    EXPECT_EQ(Fields(Fft(*dialog, 0)->isEnabled(), Fft(*dialog, 1)->isEnabled(),
                     Fft(*dialog, 2)->isEnabled()),
              on ? "1|0|0|" : "1|1|1|");
    automatic->click();
  }
}

TEST_F(FrmSettingsTest, OkStoresEverythingAsText) {
  store_.Set("Setup", "DSO", "1");
  auto dialog = Open();
  Find<QLineEdit>(*dialog, "txtVISA")->setText("  TCPIP0::10.0.0.7::inst0::INSTR \t");
  Fft(*dialog, 0)->click();
  Find<QCheckBox>(*dialog, "chkAuto")->click();
  Find<QCheckBox>(*dialog, "chkWGEN")->click();
  Find<QComboBox>(*dialog, "cboDSO")->setCurrentIndex(0);
  Find<QRadioButton>(*dialog, "optChannels", 1)->click();
  Find<QPushButton>(*dialog, "cmdOk")->click();
  EXPECT_EQ(dialog->result(), QDialog::Accepted);
  EXPECT_EQ(Fields(address_, algorithm_, auto_algorithm_, scope_.HasWgen, scope_.HasDvm,
                   scope_.ChannelCount),
            "TCPIP0::10.0.0.7::inst0::INSTR|1|1|1|0|4|");
  const auto stored = [this](const char* section, const char* key) {
    return store_.Find(section, key).value_or("<missing>");
  };
  EXPECT_EQ(Fields(stored("Setup", "VISA"), stored("FFT", "Algo"), stored("FFT", "Auto"),
                   stored("Setup", "DSO"), stored("Setup", "Channels"), stored("Setup", "DVM"),
                   stored("Setup", "WGEN")),
            "TCPIP0::10.0.0.7::inst0::INSTR|1|1|0|4|0|1|");
}

TEST_F(FrmSettingsTest, CancelChangesNothingButTheChannelCountReadAtOpening) {
  store_.Set("Setup", "Channels", "4");
  store_.Set("Setup", "VISA", "old");
  scope_.ChannelCount = 2;
  const int writes_before = store_.writes();
  auto dialog = Open();
  Find<QLineEdit>(*dialog, "txtVISA")->setText("new");
  Find<QRadioButton>(*dialog, "optChannels", 0)->click();
  Find<QCheckBox>(*dialog, "chkDVM")->click();
  Fft(*dialog, 2)->click();
  Find<QPushButton>(*dialog, "cmdCancel")->click();
  EXPECT_EQ(dialog->result(), QDialog::Rejected);
  EXPECT_EQ(store_.writes(), writes_before);
  EXPECT_EQ(Fields(address_, algorithm_, scope_.HasDvm, scope_.ChannelCount),
            "|2|0|4|");  // the channel count read while opening is kept
}

}  // namespace
}  // namespace quarvelo::dialogs
