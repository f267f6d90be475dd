// The waveform generator's remote panel: generator number, function, frequency or period,
// amplitude and offset or high and low levels, the function's shape parameter, modulation,
// output load, output on/off and the oscilloscope's Run/Stop. Every edit is sent, read back
// and shown again, so the panel shows what the instrument accepted. Not modal: it stays open
// beside the main window; while it exists ScopeState's WgenDialogOpen is set.
#ifndef QUARVELO_DIALOGS_FRMWGEN_H_
#define QUARVELO_DIALOGS_FRMWGEN_H_

#include <QDialog>
#include <array>
#include <cstdint>
#include <string>

#include "dialogs/dialog_services.h"

class QButtonGroup;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QSpinBox;
class QToolButton;

namespace quarvelo::dialogs {

// The pulse width stays this far from 0 and from the whole period.
inline constexpr double kPulseWidthMargin = 20e-9;
inline constexpr int kDutyCycleMin = 20;
inline constexpr int kDutyCycleMax = 80;

class frmWGEN : public QDialog {
  Q_OBJECT

 public:
  explicit frmWGEN(const DialogServices& services, QWidget* parent = nullptr);
  ~frmWGEN() override;

  // Rebuilds every control from ScopeState with Refreshing set.
  void ShowState();

 private:
  void BuildControls();
  QWidget* BuildSignalBox();
  QWidget* BuildModulationBox();
  QWidget* BuildButtons();
  void Refresh();  // ReadBackWgen, then ShowState
  void Send(const std::string& tail);
  double Box(const QLineEdit* box) const;
  void ShowFunction();
  void ShowModulation();
  void ShowShapeValue(double percent);

  void cboWGEN_Click(int item);
  void cboFunction_Click(int item);
  void cboModulation_Click(int item);
  void cboMODulationFUNCtion_Click(int item);
  void cboOUTPutLOAD_Click(int item);
  void sspValue_Change(int value);
  void txtMHz_Change();
  void optFreq_Click(int unit);
  void cmdSet_Click();
  void ssrWGEN_Click(bool on);
  void ssrRun_Click(bool on);
  void cmdReset_Click();

  DialogServices services_;
  acquisition::ScopeState& scope_;
  acquisition::WgenSettings& wgen_;

  bool Refreshing = false;
  double FrequencyHz = 0;
  std::int16_t TimingEntry = 0;  // 0: the frequency was edited last, 1: the period
  std::int16_t LevelEntry = 0;   // 0: amplitude and offset edited last, 1: high and low

  QComboBox* cbo_wgen_ = nullptr;
  QComboBox* cbo_function_ = nullptr;
  QLineEdit* txt_mhz_ = nullptr;
  std::array<QRadioButton*, 3> opt_freq_{};
  QButtonGroup* freq_group_ = nullptr;
  QLineEdit* txt_period_ = nullptr;
  QLineEdit* txt_voltage_ = nullptr;
  QLineEdit* txt_offset_ = nullptr;
  QLineEdit* txt_high_ = nullptr;
  QLineEdit* txt_low_ = nullptr;
  QSpinBox* ssp_value_ = nullptr;
  QLabel* lbl_value_ = nullptr;
  QComboBox* cbo_modulation_ = nullptr;
  QComboBox* cbo_mod_function_ = nullptr;
  QSpinBox* ssp_am_depth_ = nullptr;
  QLineEdit* txt_mod_frequency_ = nullptr;
  QLineEdit* txt_fm_deviation_ = nullptr;
  QLineEdit* txt_fsk_rate_ = nullptr;
  QSpinBox* ssp_ramp_symmetry_ = nullptr;
  QSpinBox* ssp_noise_ = nullptr;
  QComboBox* cbo_load_ = nullptr;
  QToolButton* ssr_wgen_ = nullptr;
  QToolButton* ssr_run_ = nullptr;
  QPushButton* cmd_set_ = nullptr;
};

}  // namespace quarvelo::dialogs

#endif  // QUARVELO_DIALOGS_FRMWGEN_H_
