#include "dialogs/frmMath.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <string>

#include "dialogs/dialog_widgets.h"
#include "platform/text/number_parse.h"
#include "platform/text/number_text.h"

namespace quarvelo::dialogs {
namespace {

const QStringList kSource1Items = {"CHAN1", "CHAN2", "CHAN3", "CHAN4", "GOFT"};
const QStringList kSource1ItemsX3000 = {"CHAN1", "CHAN2", "CHAN3", "CHAN4", "FUNC1",
                                        "FUNC2", "MATH1", "MATH2", "BUS1",  "BUS2"};

double BoxNumber(const QLineEdit* box) { return text::LeadingNumber(box->text().toStdString()); }

void ShowNumber(QLineEdit* box, double value) {
  box->setText(QString::fromStdString(DecimalText(value)));
}

// A caption beside its control; the caption also names the control for screen readers.
void AddLabelled(QGridLayout* grid, int row, int column, const QString& caption, QWidget* control) {
  auto* label = new QLabel(caption);
  label->setBuddy(control);
  if (control->accessibleName().isEmpty()) control->setAccessibleName(caption);
  grid->addWidget(label, row, column);
  grid->addWidget(control, row, column + 1);
}

}  // namespace

frmMath::frmMath(const DialogServices& services, QWidget* parent)
    : QDialog(parent), services_(services), scope_(services.Scope) {
  setObjectName(QStringLiteral("frmMath"));
  setWindowTitle(QStringLiteral("MATH Settings"));
  setModal(true);
  BuildControls();
  Load();
}

void frmMath::BuildControls() {
  auto* layout = new QVBoxLayout(this);
  auto* top = new QGridLayout;

  cbo_func_ = Named(new QComboBox, "cboFunc");
  cbo_func_->addItems({"FUNC1", "FUNC2"});
  AddLabelled(top, 0, 0, QStringLiteral("Function #"), cbo_func_);
  connect(cbo_func_, &QComboBox::currentIndexChanged, this, [this](int i) { cboFunc_Click(i); });

  const QStringList operation_items[2] = {{"ADD", "SUBTract", "MULTiply", "DIVide", "FFT"},
                                          {"ADD", "SUBTract", "MULTiply"}};
  const QString operation_labels[2] = {QStringLiteral("Operation"), QStringLiteral("GOFT = G(t)")};
  for (int i = 0; i < 2; ++i) {
    QComboBox* box = Indexed(Named(new QComboBox, "cboOperation"), i);
    box->addItems(operation_items[i]);
    AddLabelled(top, 1, 2 * i, operation_labels[i], box);
    connect(box, &QComboBox::currentIndexChanged, this,
            [this, i](int item) { cboOperation_Click(i, item); });
    cbo_operation_[static_cast<std::size_t>(i)] = box;
  }

  const QStringList channels = {"CHAN1", "CHAN2", "CHAN3", "CHAN4"};
  const QStringList source_items[4] = {kSource1Items, channels + QStringList{"NONE"}, channels,
                                       channels};
  const QString source_labels[4] = {QStringLiteral("Source 1"), QStringLiteral("Source 2"),
                                    QStringLiteral("G(t) Source 1"),
                                    QStringLiteral("G(t) Source 2")};
  for (int i = 0; i < 4; ++i) {
    QComboBox* box = Indexed(Named(new QComboBox, "cboSource"), i);
    box->addItems(source_items[i]);
    AddLabelled(top, 2 + i % 2, 2 * (i / 2), source_labels[i], box);
    connect(box, &QComboBox::currentIndexChanged, this,
            [this, i](int item) { cboSource_Click(i, item); });
    cbo_source_[static_cast<std::size_t>(i)] = box;
  }

  cbo_vtype_ = Named(new QComboBox, "cboVType");
  cbo_vtype_->addItems({"DECibel", "VRMS"});
  AddLabelled(top, 4, 0, QStringLiteral("Vert. Scale"), cbo_vtype_);
  connect(cbo_vtype_, &QComboBox::currentIndexChanged, this, [this](int i) { cboVType_Click(i); });
  cbo_window_ = Named(new QComboBox, "cboWindow");
  cbo_window_->addItems({"RECTangular", "HANNing", "FLATtop", "BHARris"});
  AddLabelled(top, 4, 2, QStringLiteral("Windowing"), cbo_window_);
  connect(cbo_window_, &QComboBox::currentIndexChanged, this,
          [this](int i) { cboWindow_Click(i); });
  layout->addLayout(top);

  const QString set_captions[3] = {QStringLiteral("SetBW Limit"),
                                   QStringLiteral("Set Center Frequency and Span"),
                                   QStringLiteral("Set Offset Range Reference")};
  for (int i = 0; i < 3; ++i) {
    QPushButton* button =
        Indexed(Named(new QPushButton(set_captions[i]), "cmdSet", QString(), set_captions[i]), i);
    connect(button, &QPushButton::clicked, this, [this, i] { cmdSet_Click(i); });
    cmd_set_[static_cast<std::size_t>(i)] = button;
  }

  auto* frequency_frame = Named(new QGroupBox(QStringLiteral("FFT Freq/Span")), "fraFreq",
                                QString(), QStringLiteral("FFT Freq/Span"));
  auto* frequency_grid = new QGridLayout(frequency_frame);
  const QString frequency_tips[3] = {QStringLiteral("Center Frequency (MHz)"),
                                     QStringLiteral("Span width (MHz)"),
                                     QStringLiteral("Upper Limit or Stop frequency (MHz)")};
  const QString frequency_labels[3] = {QStringLiteral("Center"), QStringLiteral("Span"),
                                       QStringLiteral("BW Limit")};
  for (int i = 0; i < 3; ++i) {
    QLineEdit* box = Indexed(Named(new QLineEdit, "txtMHz", frequency_tips[i]), i);
    connect(box, &QLineEdit::textChanged, this, [this, i] {
      if (Refreshing) return;
      LastFrequencyBox = static_cast<std::int16_t>(i);
      FrequencyEdited = true;
    });
    txt_mhz_[static_cast<std::size_t>(i)] = box;
    AddLabelled(frequency_grid, i, 0, frequency_labels[i], box);
    frequency_grid->addWidget(new QLabel(QStringLiteral("MHz")), i, 2);
  }
  frequency_grid->addWidget(cmd_set_[kSetCenterSpan], 0, 3, 2, 1);
  frequency_grid->addWidget(cmd_set_[kSetStopFrequency], 2, 3);
  layout->addWidget(frequency_frame);

  auto* scale_frame = Named(new QGroupBox(QStringLiteral("Scales")), "fraScales", QString(),
                            QStringLiteral("Scales"));
  auto* scale_grid = new QGridLayout(scale_frame);
  const QString scale_labels[3] = {QStringLiteral("Offset"), QStringLiteral("Range"),
                                   QStringLiteral("Reference")};
  for (int i = 0; i < 3; ++i) {
    QLineEdit* box = Indexed(Named(new QLineEdit, "txtScale", scale_labels[i]), i);
    connect(box, &QLineEdit::textChanged, this, [this] {
      if (!Refreshing) ScaleEdited = true;
    });
    txt_scale_[static_cast<std::size_t>(i)] = box;
    AddLabelled(scale_grid, i, 0, scale_labels[i], box);
  }
  scale_grid->addWidget(cmd_set_[kSetScales], 0, 2, 3, 1);
  layout->addWidget(scale_frame);

  auto* buttons = new QDialogButtonBox;
  cmd_ok_ = Named(new QPushButton(QStringLiteral("OK")), "cmdOk", QString(), "OK");
  cmd_ok_->setDefault(true);
  cmd_cancel_ = Named(new QPushButton(QStringLiteral("&Cancel")), "cmdCancel", QString(),
                      QStringLiteral("Cancel"));
  buttons->addButton(cmd_ok_, QDialogButtonBox::AcceptRole);
  buttons->addButton(cmd_cancel_, QDialogButtonBox::RejectRole);
  connect(cmd_ok_, &QPushButton::clicked, this, [this] { cmdOk_Click(); });
  connect(cmd_cancel_, &QPushButton::clicked, this, &QDialog::reject);
  layout->addWidget(buttons);
}

void frmMath::Load() {
  {
    RefreshingGuard guard(Refreshing);
    ShowNumber(txt_mhz_[0], scope_.FftCenter / 1e6);
    ShowNumber(txt_mhz_[1], scope_.FftSpan / 1e6);
    ShowNumber(txt_mhz_[2], scope_.FftSpan / 1e6);
    // One math function and the inner g(t) on the smaller model; two functions without g(t)
    // on the larger one.
    cbo_func_->setEnabled(scope_.Model != 0);
    for (QComboBox* goft : {cbo_operation_[1], cbo_source_[2], cbo_source_[3]}) {
      goft->setEnabled(scope_.Model == 0);
    }
    if (scope_.Model == 1) {
      cbo_source_[0]->clear();
      cbo_source_[0]->addItems(kSource1ItemsX3000);
    }
  }
  ShowState();
}

void frmMath::ShowState() {
  RefreshingGuard guard(Refreshing);
  const std::string& prefix = scope_.MathPrefix;
  SelectMnemonic(cbo_func_, prefix.empty() ? prefix : prefix.substr(1));
  SelectMnemonic(cbo_operation_[0], scope_.MathOperation);
  SelectMnemonic(cbo_source_[0], scope_.MathSource1);
  SelectMnemonic(cbo_source_[1], scope_.MathSource2);
  if (scope_.Model == 0) {
    SelectMnemonic(cbo_operation_[1], scope_.GoftOperation);
    SelectMnemonic(cbo_source_[2], scope_.GoftSource1);
    SelectMnemonic(cbo_source_[3], scope_.GoftSource2);
  }
  cbo_vtype_->setCurrentIndex(scope_.FftVerticalType);
  cbo_window_->setCurrentIndex(scope_.FftWindow);
  ShowNumber(txt_mhz_[0], scope_.FftCenter / 1e6);
  ShowNumber(txt_mhz_[1], scope_.FftSpan / 1e6);
  ShowNumber(txt_mhz_[2], scope_.FftSpan / 1e6);
  ShowNumber(txt_scale_[0], scope_.MathOffset);
  ShowNumber(txt_scale_[1], scope_.MathRange);
  ShowNumber(txt_scale_[2], scope_.MathReference);
}

void frmMath::SendMath(const std::string& tail) {
  services_.Link.SendCommand(scope_.MathPrefix + tail);
}

void frmMath::ReadBackAndShow() {
  services_.Readback.ReadBackMath(true);
  ShowState();
}

void frmMath::cboFunc_Click(int item) {
  if (Refreshing || item < 0) return;
  scope_.MathPrefix = ":" + cbo_func_->itemText(item).toStdString();
  ReadBackAndShow();
}

void frmMath::cboOperation_Click(int index, int item) {
  if (Refreshing || item < 0) return;
  const std::string text =
      cbo_operation_[static_cast<std::size_t>(index)]->itemText(item).toStdString();
  SendMath((index == 0 ? ":OPERation " : ":GOFT:OPERation ") + text);
  ReadBackAndShow();
}

void frmMath::cboSource_Click(int index, int item) {
  if (Refreshing || item < 0) return;
  const std::string text =
      cbo_source_[static_cast<std::size_t>(index)]->itemText(item).toStdString();
  if (index < 2) {
    SendMath(":SOURce" + std::to_string(index + 1) + " " + text);
  } else {
    SendMath(":GOFT:SOURce" + std::to_string(index - 1) + " " + text);
  }
  ReadBackAndShow();
}

void frmMath::cboVType_Click(int item) {
  if (Refreshing || item < 0) return;
  SendMath(":FFT:VTYPe " + cbo_vtype_->itemText(item).toStdString());
  services_.Readback.ReadBackMath(true);
}

void frmMath::cboWindow_Click(int item) {
  if (Refreshing || item < 0) return;
  SendMath(":FFT:WINDow " + cbo_window_->itemText(item).toStdString());
}

// The instrument's FFT centre and span; a span of 0 leaves the span as it is.
void frmMath::SetFftCenterSpan(double center_hz, double span_hz) {
  if (!services_.Link.session().RemoteOn) return;
  SendMath(":FFT:CENTer " + text::WholeNumberText(center_hz));
  if (span_hz != 0) SendMath(":FFT:SPAN " + text::WholeNumberText(span_hz));
}

void frmMath::cmdSet_Click(int index) {
  if (index == kSetStopFrequency) {
    const double stop = BoxNumber(txt_mhz_[2]);
    SetFftCenterSpan(stop * 1e6 / 2, stop * 1e6);
    RefreshingGuard guard(Refreshing);
    ShowNumber(txt_mhz_[0], stop / 2);
    ShowNumber(txt_mhz_[1], stop);
    FrequencyEdited = false;
  } else if (index == kSetCenterSpan) {
    const double center = BoxNumber(txt_mhz_[0]);
    const double span = BoxNumber(txt_mhz_[1]);
    SetFftCenterSpan(center * 1e6, span * 1e6);
    RefreshingGuard guard(Refreshing);
    ShowNumber(txt_mhz_[0], center);
    ShowNumber(txt_mhz_[1], span);
    ShowNumber(txt_mhz_[2], span);
    FrequencyEdited = false;
  } else {
    scope_.MathOffset = BoxNumber(txt_scale_[0]);
    scope_.MathRange = BoxNumber(txt_scale_[1]);
    scope_.MathReference = BoxNumber(txt_scale_[2]);
    SendMath(":OFFSet " + text::NumberText(scope_.MathOffset));
    SendMath(":RANGe " + text::NumberText(scope_.MathRange));
    SendMath(":REFerence " + text::NumberText(scope_.MathReference));
    ScaleEdited = false;
  }
  ReadBackAndShow();
}

void frmMath::cmdOk_Click() {
  if (FrequencyEdited) cmdSet_Click(LastFrequencyBox == 2 ? kSetStopFrequency : kSetCenterSpan);
  if (ScaleEdited) cmdSet_Click(kSetScales);
  accept();
}

}  // namespace quarvelo::dialogs
