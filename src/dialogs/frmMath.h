// The math function dialog: which function, its operation and sources, the inner function g(t)
// of single-function instruments, the FFT's centre, span, vertical scale and window, and the
// function's offset, range and reference. Every change is sent at once and read back, so the
// controls show what the instrument accepted. Modal.
#ifndef QUARVELO_DIALOGS_FRMMATH_H_
#define QUARVELO_DIALOGS_FRMMATH_H_

#include <QDialog>
#include <array>
#include <cstdint>

#include "dialogs/dialog_services.h"

class QComboBox;
class QLineEdit;
class QPushButton;

namespace quarvelo::dialogs {

// Indexes of the `cmdSet` buttons.
inline constexpr int kSetStopFrequency = 0;
inline constexpr int kSetCenterSpan = 1;
inline constexpr int kSetScales = 2;

class frmMath : public QDialog {
  Q_OBJECT

 public:
  // Load: the math settings must have been read back already (the math tool does that).
  explicit frmMath(const DialogServices& services, QWidget* parent = nullptr);

  // Fills every control from ScopeState with Refreshing set.
  void ShowState();

 private:
  void BuildControls();
  void Load();
  void cboFunc_Click(int item);
  void cboOperation_Click(int index, int item);
  void cboSource_Click(int index, int item);
  void cboVType_Click(int item);
  void cboWindow_Click(int item);
  void cmdSet_Click(int index);
  void cmdOk_Click();
  void SetFftCenterSpan(double center_hz, double span_hz);
  void SendMath(const std::string& tail);
  void ReadBackAndShow();

  DialogServices services_;
  acquisition::ScopeState& scope_;

  bool Refreshing = false;
  std::int16_t LastFrequencyBox = 0;
  bool FrequencyEdited = false;
  bool ScaleEdited = false;

  QComboBox* cbo_func_ = nullptr;
  std::array<QComboBox*, 2> cbo_operation_{};
  std::array<QComboBox*, 4> cbo_source_{};
  QComboBox* cbo_vtype_ = nullptr;
  QComboBox* cbo_window_ = nullptr;
  std::array<QLineEdit*, 3> txt_mhz_{};
  std::array<QLineEdit*, 3> txt_scale_{};
  std::array<QPushButton*, 3> cmd_set_{};
  QPushButton* cmd_ok_ = nullptr;
  QPushButton* cmd_cancel_ = nullptr;
};

}  // namespace quarvelo::dialogs

#endif  // QUARVELO_DIALOGS_FRMMATH_H_
