// The settings dialog: the instrument's VISA address, its model, channel count and options,
// and the Fourier algorithm. OK stores everything at once; Cancel stores nothing.
#ifndef QUARVELO_DIALOGS_FRMSETTINGS_H_
#define QUARVELO_DIALOGS_FRMSETTINGS_H_

#include <QDialog>
#include <array>
#include <string>

#include "acquisition/scope_state.h"
#include "platform/discovery/instrument_search.h"
#include "platform/settings/settings_store.h"

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;

namespace quarvelo::dialogs {

class InstrumentFinder;

// The in-memory values the dialog shows and sets; they belong to the main window.
struct SettingsDialogRecords {
  std::string& Address;  // the instrument session's VISA resource string
  int& Algorithm;        // 1 "FFT A", 2 "FFT", 3 "DFT (VY SLOW !)"; anything else selects none
  bool& AutoAlgorithm;
  acquisition::ScopeState& Scope;  // ChannelCount, HasDvm, HasWgen
};

// The help text under the address box.
extern const char kVisaHelpText[];

class frmSettings : public QDialog {
  Q_OBJECT

 public:
  // Fills the controls from the store and the records. Reading the channel count into
  // `records.Scope` happens here, and stays in effect even when the dialog is cancelled.
  frmSettings(settings::SettingsStore& store, const SettingsDialogRecords& records,
              QWidget* parent = nullptr);

  // Where "Find" searches (tests point it at simulators on loopback).
  void SetSearchOptions(const discovery::SearchOptions& options);

 private:
  void BuildControls();
  void FillControls();
  void UpdateAlgorithmButtons();
  void cmdOk_Click();

  settings::SettingsStore& store_;
  SettingsDialogRecords records_;

  QLineEdit* txt_visa_ = nullptr;
  QPlainTextEdit* txt_help_ = nullptr;
  InstrumentFinder* finder_ = nullptr;
  QComboBox* cbo_dso_ = nullptr;
  std::array<QRadioButton*, 2> opt_channels_{};
  QCheckBox* chk_wgen_ = nullptr;
  QCheckBox* chk_dvm_ = nullptr;
  std::array<QRadioButton*, 3> opt_fft_{};
  QButtonGroup* fft_group_ = nullptr;
  QCheckBox* chk_auto_ = nullptr;
  QPushButton* cmd_ok_ = nullptr;
  QPushButton* cmd_cancel_ = nullptr;
};

}  // namespace quarvelo::dialogs

#endif  // QUARVELO_DIALOGS_FRMSETTINGS_H_
