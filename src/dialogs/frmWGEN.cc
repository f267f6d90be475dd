#include "dialogs/frmWGEN.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

#include "dialogs/dialog_widgets.h"
#include "link/tool_update_guard.h"
#include "platform/text/number_parse.h"
#include "platform/text/number_text.h"

namespace quarvelo::dialogs {
namespace {

constexpr int kFunctionUnknown = 6;
constexpr int kModulationFunctionNone = 3;
constexpr double kUnitFactors[3] = {1, 1000, 1e6};

void ShowNumber(QLineEdit* box, double value) {
  box->setText(QString::fromStdString(DecimalText(value)));
}

void Blank(QLineEdit* box) {
  box->clear();
  box->setEnabled(false);
}

QToolButton* Toggle(const char* name, const QString& caption, const QString& tooltip) {
  auto* button = Named(new QToolButton, name, tooltip);
  button->setText(caption);
  button->setCheckable(true);
  button->setToolButtonStyle(Qt::ToolButtonTextOnly);
  return button;
}

QSpinBox* Percent(const char* name, const QString& tooltip) {
  auto* box = Named(new QSpinBox, name, tooltip);
  box->setRange(0, 100);
  box->setKeyboardTracking(false);  // one change per entry, not one per keystroke
  return box;
}

void AddLabelled(QGridLayout* grid, int row, int column, const QString& caption, QWidget* control) {
  auto* label = new QLabel(caption);
  label->setBuddy(control);
  grid->addWidget(label, row, column);
  grid->addWidget(control, row, column + 1);
}

// The shape parameter's percentage of a pulse: its width in whole percent of the period.
int PulsePercent(double width, double period) {
  return period > 0 ? static_cast<int>(std::trunc(width / period * 100)) : 0;
}

}  // namespace

frmWGEN::frmWGEN(const DialogServices& services, QWidget* parent)
    : QDialog(parent), services_(services), scope_(services.Scope), wgen_(services.Scope.Wgen) {
  setObjectName(QStringLiteral("frmWGEN"));
  setWindowTitle(QStringLiteral("WGEN"));
  setModal(false);
  BuildControls();
  scope_.WgenDialogOpen = true;
  connect(this, &QDialog::finished, this, [this] { scope_.WgenDialogOpen = false; });
  ShowState();
}

frmWGEN::~frmWGEN() { scope_.WgenDialogOpen = false; }

void frmWGEN::BuildControls() {
  auto* layout = new QVBoxLayout(this);
  auto* top = new QHBoxLayout;
  cbo_wgen_ = Named(new QComboBox, "cboWGEN", QString(), QStringLiteral("WGEN #"));
  cbo_wgen_->addItems({"WGEN1", "WGEN2"});
  auto* wgen_label = new QLabel(QStringLiteral("WGEN #"));
  wgen_label->setBuddy(cbo_wgen_);
  connect(cbo_wgen_, &QComboBox::currentIndexChanged, this, [this](int i) { cboWGEN_Click(i); });
  ssr_wgen_ = Toggle("ssrWGEN", QStringLiteral("Output"), QStringLiteral("WGEN On/Off"));
  connect(ssr_wgen_, &QToolButton::toggled, this, [this](bool on) { ssrWGEN_Click(on); });
  ssr_run_ = Toggle("ssrRun", QStringLiteral("Run"), QStringLiteral("Run/Stop"));
  connect(ssr_run_, &QToolButton::toggled, this, [this](bool on) { ssrRun_Click(on); });
  top->addWidget(wgen_label);
  top->addWidget(cbo_wgen_);
  top->addStretch(1);
  top->addWidget(ssr_wgen_);
  top->addWidget(ssr_run_);
  layout->addLayout(top);
  layout->addWidget(BuildSignalBox());
  layout->addWidget(BuildModulationBox());
  layout->addWidget(BuildButtons());
}

QWidget* frmWGEN::BuildSignalBox() {
  auto* frame = Named(new QGroupBox(QStringLiteral("Signal")), "fraSignal", QString(),
                      QStringLiteral("Signal"));
  auto* grid = new QGridLayout(frame);

  cbo_function_ = Named(new QComboBox, "cboFunction", QStringLiteral("Signal type"));
  cbo_function_->addItems({"SINusoid", "SQU", "RAMP", "PULSe", "NOISe", "DC", "----"});
  connect(cbo_function_, &QComboBox::currentIndexChanged, this,
          [this](int i) { cboFunction_Click(i); });
  AddLabelled(grid, 0, 0, QStringLiteral("Function"), cbo_function_);

  txt_mhz_ = Named(new QLineEdit, "txtMHz",
                   QStringLiteral("Frequency for all waveforms except Noise and DC"));
  connect(txt_mhz_, &QLineEdit::textChanged, this, [this] { txtMHz_Change(); });
  AddLabelled(grid, 1, 0, QStringLiteral("Frequency"), txt_mhz_);
  auto* units = new QHBoxLayout;
  freq_group_ = new QButtonGroup(this);
  const QString unit_names[3] = {QStringLiteral("Hz"), QStringLiteral("kHz"),
                                 QStringLiteral("MHz")};
  for (int i = 0; i < 3; ++i) {
    QRadioButton* option =
        Indexed(Named(new QRadioButton(unit_names[i]), "optFreq", QString(), unit_names[i]), i);
    freq_group_->addButton(option, i);
    units->addWidget(option);
    opt_freq_[static_cast<std::size_t>(i)] = option;
  }
  connect(freq_group_, &QButtonGroup::idClicked, this, [this](int unit) { optFreq_Click(unit); });
  grid->addLayout(units, 1, 2, 1, 2);

  txt_period_ = Named(new QLineEdit, "txtPERiod", QStringLiteral("Period"));
  connect(txt_period_, &QLineEdit::textChanged, this, [this] {
    if (!Refreshing) TimingEntry = 1;
  });
  AddLabelled(grid, 2, 0, QStringLiteral("Period (s)"), txt_period_);

  txt_voltage_ = Named(new QLineEdit, "txtVOLTage", QStringLiteral("Voltage"));
  txt_offset_ = Named(new QLineEdit, "txtVOLTageOFFSet", QStringLiteral("Voltage offset"));
  txt_high_ = Named(new QLineEdit, "txtVOLTageHIGH", QStringLiteral("Voltage High"));
  txt_low_ = Named(new QLineEdit, "txtVOLTageLOW", QStringLiteral("Voltage Low"));
  for (QLineEdit* box : {txt_voltage_, txt_offset_}) {
    connect(box, &QLineEdit::textChanged, this, [this] {
      if (!Refreshing) LevelEntry = 0;
    });
  }
  for (QLineEdit* box : {txt_high_, txt_low_}) {
    connect(box, &QLineEdit::textChanged, this, [this] {
      if (!Refreshing) LevelEntry = 1;
    });
  }
  AddLabelled(grid, 3, 0, QStringLiteral("Amplitude (V)"), txt_voltage_);
  AddLabelled(grid, 3, 2, QStringLiteral("Offset (V)"), txt_offset_);
  AddLabelled(grid, 4, 0, QStringLiteral("High (V)"), txt_high_);
  AddLabelled(grid, 4, 2, QStringLiteral("Low (V)"), txt_low_);

  ssp_value_ = Percent("sspValue", QString());
  lbl_value_ = Named(new QLabel, "lblValue", QString(), QStringLiteral("Shape parameter"));
  lbl_value_->setBuddy(ssp_value_);
  ssp_value_->setAccessibleName(QStringLiteral("Shape parameter (%)"));
  connect(ssp_value_, &QSpinBox::valueChanged, this, [this](int v) { sspValue_Change(v); });
  grid->addWidget(lbl_value_, 5, 0);
  grid->addWidget(ssp_value_, 5, 1);

  cbo_load_ = Named(new QComboBox, "cboOUTPutLOAD", QStringLiteral("Output Load"));
  cbo_load_->addItems({"ONEMeg", "FIFTy"});
  connect(cbo_load_, &QComboBox::currentIndexChanged, this,
          [this](int i) { cboOUTPutLOAD_Click(i); });
  AddLabelled(grid, 5, 2, QStringLiteral("Load"), cbo_load_);
  return frame;
}

QWidget* frmWGEN::BuildModulationBox() {
  auto* frame = Named(new QGroupBox(QStringLiteral("Modulation")), "fraModulation", QString(),
                      QStringLiteral("Modulation"));
  auto* grid = new QGridLayout(frame);
  cbo_modulation_ = Named(new QComboBox, "cboModulation", QStringLiteral("Modulation Type On/Off"));
  cbo_modulation_->addItems({"OFF", "AM", "FM", "FSK"});
  connect(cbo_modulation_, &QComboBox::currentIndexChanged, this,
          [this](int i) { cboModulation_Click(i); });
  AddLabelled(grid, 0, 0, QStringLiteral("Type"), cbo_modulation_);

  cbo_mod_function_ =
      Named(new QComboBox, "cboMODulationFUNCtion", QStringLiteral("Modulation Function"));
  cbo_mod_function_->addItems({"SINusoid", "SQUare", "RAMP", "---"});
  connect(cbo_mod_function_, &QComboBox::currentIndexChanged, this,
          [this](int i) { cboMODulationFUNCtion_Click(i); });
  AddLabelled(grid, 0, 2, QStringLiteral("Function"), cbo_mod_function_);

  ssp_am_depth_ = Percent("sspAMDEPTh", QStringLiteral("AM Depth"));
  connect(ssp_am_depth_, &QSpinBox::valueChanged, this, [this](int v) {
    if (!Refreshing) Send(":MODulation:AM:DEPTh  " + std::to_string(v));
  });
  AddLabelled(grid, 1, 0, QStringLiteral("AM Depth (%)"), ssp_am_depth_);

  txt_mod_frequency_ =
      Named(new QLineEdit, "txtMODFREQuency", QStringLiteral("Modulation Frequency"));
  AddLabelled(grid, 1, 2, QStringLiteral("Mod. Freq. (Hz)"), txt_mod_frequency_);
  txt_fm_deviation_ = Named(new QLineEdit, "txtFMDEViation", QStringLiteral("FM Deviation (Hz)"));
  AddLabelled(grid, 2, 0, QStringLiteral("FM Dev. (Hz)"), txt_fm_deviation_);
  txt_fsk_rate_ = Named(new QLineEdit, "txtFSKeyRATE",
                        QStringLiteral("FSKey Rate (Hz). Specifies the rate at which the output "
                                       "frequency \"shifts\"."));
  AddLabelled(grid, 2, 2, QStringLiteral("FSK Rate (Hz)"), txt_fsk_rate_);

  ssp_ramp_symmetry_ = Percent("sspRAMPSYMMetry",
                               QStringLiteral("Ramp Symmetry (%). Specifies the amount of time per "
                                              "cycle that the ramp waveform is rising"));
  connect(ssp_ramp_symmetry_, &QSpinBox::valueChanged, this, [this](int v) {
    if (!Refreshing) Send(":MODulation:FUNCtion:RAMP:SYMMetry " + std::to_string(v));
  });
  AddLabelled(grid, 3, 0, QStringLiteral("Ramp Sym. (%)"), ssp_ramp_symmetry_);
  ssp_noise_ = Percent("sspNoise", QStringLiteral("Modulation Noise (%)"));
  connect(ssp_noise_, &QSpinBox::valueChanged, this, [this](int v) {
    if (!Refreshing) Send(":MODulation:NOISe " + std::to_string(v));
  });
  AddLabelled(grid, 3, 2, QStringLiteral("Noise (%)"), ssp_noise_);
  return frame;
}

QWidget* frmWGEN::BuildButtons() {
  auto* row = new QWidget;
  auto* layout = new QHBoxLayout(row);
  layout->setContentsMargins(0, 0, 0, 0);
  auto button = [&](const char* name, const QString& caption, const QString& tooltip) {
    auto* b =
        Named(new QPushButton(caption), name, tooltip, QString(caption).remove(QLatin1Char('&')));
    layout->addWidget(b);
    return b;
  };
  cmd_set_ = button("cmdSet", QStringLiteral("Set"), QStringLiteral("Set WGEN"));
  connect(cmd_set_, &QPushButton::clicked, this, [this] { cmdSet_Click(); });
  connect(button("cmdReset", QStringLiteral("Reset"), QStringLiteral("Reset WGEN")),
          &QPushButton::clicked, this, [this] { cmdReset_Click(); });
  connect(button("cmdRefresh", QStringLiteral("Refresh"), QString()), &QPushButton::clicked, this,
          [this] { Refresh(); });
  connect(button("cmdAutoScale", QStringLiteral("Auto scale"), QString()), &QPushButton::clicked,
          this, [this] { services_.Link.SendCommand(":AUToscale"); });
  connect(button("cmdSweep", QStringLiteral("Sweep"), QString()), &QPushButton::clicked, this,
          [this] {
            if (services_.RequestSweep) services_.RequestSweep(true);
          });
  connect(button("cmdOk", QStringLiteral("&Exit"), QString()), &QPushButton::clicked, this,
          &QDialog::close);
  return row;
}

void frmWGEN::ShowState() {
  RefreshingGuard guard(Refreshing);
  ssr_wgen_->setChecked(wgen_.OutputOn);
  SelectMnemonic(cbo_wgen_, scope_.WgenPrefix.size() > 1 ? scope_.WgenPrefix.substr(1) : "");

  for (QWidget* control :
       {static_cast<QWidget*>(txt_mhz_), static_cast<QWidget*>(txt_period_),
        static_cast<QWidget*>(cmd_set_), static_cast<QWidget*>(ssp_value_),
        static_cast<QWidget*>(ssp_noise_), static_cast<QWidget*>(cbo_modulation_),
        static_cast<QWidget*>(txt_high_), static_cast<QWidget*>(txt_low_)}) {
    control->setEnabled(true);
  }
  ssp_value_->setRange(0, 100);
  ssp_value_->setToolTip(QString());

  const int unit = wgen_.Frequency >= 1e6 ? 2 : wgen_.Frequency >= 1000 ? 1 : 0;
  opt_freq_[static_cast<std::size_t>(unit)]->setChecked(true);
  FrequencyHz = wgen_.Frequency;
  ShowNumber(txt_mhz_, wgen_.Frequency / kUnitFactors[unit]);
  ShowNumber(txt_period_, wgen_.Period);
  ShowNumber(txt_voltage_, wgen_.Amplitude);
  ShowNumber(txt_high_, wgen_.High);
  ShowNumber(txt_low_, wgen_.Low);
  ShowNumber(txt_offset_, wgen_.Offset);
  ssp_noise_->setValue(wgen_.ModulationNoise);

  ShowFunction();
  ShowModulation();
  cbo_load_->setCurrentIndex(wgen_.OutputLoad == "ONEM" ? 0 : wgen_.OutputLoad == "FIFT" ? 1 : -1);
}

void frmWGEN::ShowFunction() {
  const std::string& f = wgen_.Function;
  auto shape = [&](int index, int value, const char* label, const char* tooltip) {
    cbo_function_->setCurrentIndex(index);
    ssp_value_->setValue(value);
    lbl_value_->setText(QString::fromLatin1(label));
    ssp_value_->setToolTip(QString::fromLatin1(tooltip));
    ssp_value_->setAccessibleName(*label != '\0' ? QString::fromLatin1(label)
                                                 : QStringLiteral("Shape parameter (%)"));
  };
  if (f == "SIN") {
    shape(0, 0, "", "");
    ssp_value_->setEnabled(false);
  } else if (f == "SQU") {
    shape(1, wgen_.SquareDutyCycle, "Duty CYCle (%)",
          "Specifies the square wave duty cycle (20% to 80%)");
    cbo_modulation_->setEnabled(false);
  } else if (f == "RAMP") {
    shape(2, wgen_.RampSymmetry, "RAMP SYMMetry (%)", "Specifies the symmetry of the waveform");
  } else if (f == "PULS") {
    shape(3, PulsePercent(wgen_.PulseWidth, wgen_.Period), "PULSe WIDTh (%)",
          "Specifies the width of the pulse in % of the period (+/-20ns)");
    cbo_modulation_->setEnabled(false);
  } else if (f == "NOIS") {
    cbo_function_->setCurrentIndex(4);
    ssp_value_->setEnabled(false);
    Blank(txt_period_);
    cbo_modulation_->setEnabled(false);
  } else if (f == "DC") {
    cbo_function_->setCurrentIndex(5);
    ssp_value_->setEnabled(false);
    Blank(txt_mhz_);
    Blank(txt_period_);
    txt_voltage_->clear();
    txt_high_->clear();
    txt_low_->clear();
    cbo_modulation_->setEnabled(false);
  } else {
    cbo_function_->setCurrentIndex(kFunctionUnknown);
    shape(kFunctionUnknown, 0, "", "");
    ssp_value_->clear();
    ssp_value_->setEnabled(false);
    Blank(txt_high_);
    Blank(txt_low_);
  }
}

void frmWGEN::ShowModulation() {
  ssr_run_->setChecked(ScopeRunning(services_));
  for (QLineEdit* box : {txt_fsk_rate_, txt_mod_frequency_, txt_fm_deviation_}) Blank(box);
  ssp_ramp_symmetry_->setValue(0);
  ssp_ramp_symmetry_->setEnabled(false);
  ssp_am_depth_->setEnabled(false);
  cbo_mod_function_->setCurrentIndex(kModulationFunctionNone);
  cbo_mod_function_->setEnabled(false);
  if (wgen_.ModulationState == 0) {
    cbo_modulation_->setCurrentIndex(0);
    return;
  }
  if (wgen_.ModulationState != 1) return;
  txt_mod_frequency_->setEnabled(true);
  auto modulation_function = [&] {
    cbo_mod_function_->setEnabled(true);
    const std::string& mf = wgen_.ModulationFunction;
    cbo_mod_function_->setCurrentIndex(mf == "SIN"    ? 0
                                       : mf == "SQU"  ? 1
                                       : mf == "RAMP" ? 2
                                                      : kModulationFunctionNone);
    if (mf == "RAMP") {
      ssp_ramp_symmetry_->setValue(wgen_.ModulationRampSymmetry);
      ssp_ramp_symmetry_->setEnabled(true);
    }
  };
  const std::string& type = wgen_.ModulationType;
  if (type == "FSK") {
    cbo_modulation_->setCurrentIndex(3);
    ShowNumber(txt_mod_frequency_, wgen_.FskFrequency);
    ShowNumber(txt_fsk_rate_, wgen_.FskRate);
    txt_fsk_rate_->setEnabled(true);
    cbo_mod_function_->setCurrentIndex(1);
  } else if (type == "FM") {
    cbo_modulation_->setCurrentIndex(2);
    ShowNumber(txt_mod_frequency_, wgen_.FmFrequency);
    modulation_function();
    ShowNumber(txt_fm_deviation_, wgen_.FmDeviation);
    txt_fm_deviation_->setEnabled(true);
  } else if (type == "AM") {
    cbo_modulation_->setCurrentIndex(1);
    ssp_am_depth_->setValue(wgen_.AmDepth);
    ssp_am_depth_->setEnabled(true);
    ShowNumber(txt_mod_frequency_, wgen_.AmFrequency);
    modulation_function();
  }
}

void frmWGEN::ShowShapeValue(double percent) {
  RefreshingGuard guard(Refreshing);
  ssp_value_->setValue(static_cast<int>(percent));
}

void frmWGEN::Refresh() {
  services_.Readback.ReadBackWgen();
  ShowState();
}

void frmWGEN::Send(const std::string& tail) {
  services_.Link.SendCommand(scope_.WgenPrefix + tail);
}

double frmWGEN::Box(const QLineEdit* box) const {
  return text::LeadingNumber(box->text().toStdString());
}

void frmWGEN::cboWGEN_Click(int item) {
  if (Refreshing || item < 0) return;
  scope_.WgenPrefix = ":" + cbo_wgen_->itemText(item).toStdString();
  Refresh();
}

void frmWGEN::cboFunction_Click(int item) {
  if (Refreshing || item < 0 || item >= kFunctionUnknown) return;
  Send(":FUNCTION " + cbo_function_->itemText(item).toStdString());
  Refresh();
}

void frmWGEN::cboModulation_Click(int item) {
  if (Refreshing || item < 0) return;
  if (item == 0) {
    Send(":MODulation:STATe 0");
  } else {
    Send(":MODulation:STATe 1");
    Send(":MODulation:TYPE " + cbo_modulation_->itemText(item).toStdString());
  }
  Refresh();
}

// "---" only shows a function the panel does not know; choosing it sends nothing.
void frmWGEN::cboMODulationFUNCtion_Click(int item) {
  if (Refreshing || item < 0 || item >= kModulationFunctionNone) return;
  Send(":MODulation:FUNCtion " + cbo_mod_function_->itemText(item).toStdString());
  Refresh();
}

void frmWGEN::cboOUTPutLOAD_Click(int item) {
  if (Refreshing || item < 0) return;
  Send(":OUTPut:LOAD " + cbo_load_->itemText(item).toStdString());
  Refresh();
}

void frmWGEN::sspValue_Change(int value) {
  if (Refreshing) return;
  link::InstrumentLink& link = services_.Link;
  const std::string& p = scope_.WgenPrefix;
  if (wgen_.Function == "SQU") {
    const int duty = std::clamp(value, kDutyCycleMin, kDutyCycleMax);
    Send(":FUNCtion:SQUare:DCYCle " + text::NumberText(duty));
    wgen_.SquareDutyCycle = static_cast<std::int16_t>(
        text::LeadingInteger(link.QueryString(p + ":FUNCtion:SQUare:DCYCle?")));
    ShowShapeValue(wgen_.SquareDutyCycle);
  } else if (wgen_.Function == "RAMP") {
    Send(":FUNCtion:RAMP:SYMMetry " + ssp_value_->text().toStdString());
    wgen_.RampSymmetry = static_cast<std::int16_t>(
        text::LeadingInteger(link.QueryString(p + ":FUNCtion:RAMP:SYMMetry?")));
    ShowShapeValue(wgen_.RampSymmetry);
  } else if (wgen_.Function == "PULS") {
    wgen_.Period = text::LeadingNumber(link.QueryString(p + ":PERiod?"));
    double width = value / 100.0 * wgen_.Period;
    if (width < kPulseWidthMargin) width = kPulseWidthMargin;
    if (width > wgen_.Period - kPulseWidthMargin) width = wgen_.Period - kPulseWidthMargin;
    Send(":FUNCtion:PULSe:WIDTh  " + text::NumberText(width));
    wgen_.PulseWidth = text::LeadingNumber(link.QueryString(p + ":FUNCtion:PULSe:WIDTh?"));
    ShowShapeValue(PulsePercent(wgen_.PulseWidth, wgen_.Period));
  }
}

void frmWGEN::txtMHz_Change() {
  if (Refreshing) return;
  const int unit = std::max(0, freq_group_->checkedId());
  FrequencyHz = Box(txt_mhz_) * kUnitFactors[unit];
  TimingEntry = 0;
}

void frmWGEN::optFreq_Click(int unit) {
  RefreshingGuard guard(Refreshing);
  ShowNumber(txt_mhz_, FrequencyHz / kUnitFactors[unit]);
}

void frmWGEN::cmdSet_Click() {
  auto number = [this](const QLineEdit* box) { return text::NumberText(Box(box)); };
  const std::string& f = wgen_.Function;
  if (f == "DC") {
    Send(":VOLTage:OFFSet " + number(txt_offset_));
    Refresh();
    return;
  }
  if (TimingEntry == 0) {
    Send(":FREQuency " + text::NumberText(FrequencyHz));
  } else {
    Send(":PERiod " + number(txt_period_));
  }
  const bool has_levels = f == "SIN" || f == "SQU" || f == "RAMP" || f == "PULS" || f == "NOIS";
  if (has_levels && LevelEntry == 1) {
    Send(":VOLTage:HIGH " + number(txt_high_));
    Send(":VOLTage:LOW  " + number(txt_low_));
  } else {
    Send(":VOLTage " + number(txt_voltage_));
    Send(":VOLTage:OFFSet " + number(txt_offset_));
  }
  if (wgen_.ModulationState == 1) {
    const std::string& type = wgen_.ModulationType;
    if (type == "AM") {
      Send(":MODulation:AM:FREQuency " + number(txt_mod_frequency_));
    } else if (type == "FM") {
      Send(":MODulation:FM:FREQuency " + number(txt_mod_frequency_));
      Send(":MODulation:FM:DEViation " + number(txt_fm_deviation_));
    } else if (type == "FSK") {
      Send(":MODulation:FSKey:FREQuency " + number(txt_mod_frequency_));
      Send(":MODulation:FSKey:RATE " + number(txt_fsk_rate_));
    }
  }
  Refresh();
}

void frmWGEN::ssrWGEN_Click(bool on) {
  if (Refreshing) return;
  Send(on ? ":OUTPut 1" : ":OUTPut 0");
  if (on) Refresh();
}

// Run/Stop belongs to the oscilloscope, not to the generator: no prefix.
void frmWGEN::ssrRun_Click(bool on) {
  if (Refreshing) return;
  services_.Link.SendCommand(on ? ":RUN" : ":STOP");
  link::StatusFlags& flags = services_.Link.flags();
  flags.Stopped = !on;
  flags.RunBit = on ? 1 : 0;
  link::ToolUpdateGuard guard(scope_.ToolUpdateInProgress);
  services_.Tools.SetToolState("ID_Run", on);
}

void frmWGEN::cmdReset_Click() {
  const ui::MessageResult answer = services_.Ui.ShowMessage(
      "RESET WGEN\r\nAre you sure?", ui::MessageIcon::kQuestion, ui::MessageButtons::kOkCancel);
  if (answer != ui::MessageResult::kOk) return;
  Send(":RST");
  Refresh();
}

}  // namespace quarvelo::dialogs
