#include "dialogs/frmSettings.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include "dialogs/instrument_finder.h"
#include "platform/settings/settings_text.h"

namespace quarvelo::dialogs {
namespace {

constexpr char kIndexProperty[] = "index";

template <typename Widget>
Widget* Named(Widget* widget, const char* object_name, const QString& tooltip = QString()) {
  widget->setObjectName(QString::fromLatin1(object_name));
  if (!tooltip.isEmpty()) widget->setToolTip(tooltip);
  return widget;
}

// Screen readers name a control by its caption, or by its tool tip when it has none.
void SetAccessibleName(QWidget* widget, const QString& caption) {
  widget->setAccessibleName(caption.isEmpty() ? widget->toolTip() : caption);
}

}  // namespace

const char kVisaHelpText[] =
    "The VISA USB address of your oscilloscope uses this format:\r\n"
    "USB0::0x0957::0x1797::SERIAL_NUMBER::0::INSTR\r\n"
    " with the SERIAL NUMBER of your oscilloscope embedded in the string.\r\n"
    "Please use the KEYSIGHT BENCHVUE software to retrieve the VISA USB address of your "
    "Keysight oscilloscope";

frmSettings::frmSettings(settings::SettingsStore& store, const SettingsDialogRecords& records,
                         QWidget* parent)
    : QDialog(parent), store_(store), records_(records) {
  setObjectName(QStringLiteral("frmSettings"));
  setWindowTitle(tr("Settings"));
  setModal(true);
  BuildControls();
  FillControls();
}

void frmSettings::BuildControls() {
  auto* layout = new QVBoxLayout(this);

  auto* visa_frame = Named(new QGroupBox(QStringLiteral("VISA USB Address")), "fraVISA");
  SetAccessibleName(visa_frame, visa_frame->title());
  auto* visa_layout = new QVBoxLayout(visa_frame);
  txt_visa_ = Named(new QLineEdit, "txtVISA", QStringLiteral("VISA USB String"));
  SetAccessibleName(txt_visa_, QString());
  txt_visa_->setMinimumWidth(420);
  txt_help_ = Named(new QPlainTextEdit, "txtHelp", tr("How to write the VISA address"));
  SetAccessibleName(txt_help_, QString());
  txt_help_->setReadOnly(true);
  txt_help_->setLineWrapMode(QPlainTextEdit::WidgetWidth);
  txt_help_->setMaximumHeight(90);
  visa_layout->addWidget(txt_visa_);
  visa_layout->addWidget(txt_help_);
  finder_ = new InstrumentFinder;
  connect(finder_, &InstrumentFinder::Picked, txt_visa_, &QLineEdit::setText);
  visa_layout->addWidget(finder_);
  layout->addWidget(visa_frame);

  auto* middle = new QHBoxLayout;

  auto* scope_frame = Named(new QGroupBox(QStringLiteral("Oscilloscope")), "fraDSO");
  SetAccessibleName(scope_frame, scope_frame->title());
  auto* scope_layout = new QGridLayout(scope_frame);
  cbo_dso_ = Named(new QComboBox, "cboDSO", tr("Oscilloscope model"));
  cbo_dso_->addItems({QStringLiteral("Keysight X2000"), QStringLiteral("Keysight X3000")});
  SetAccessibleName(cbo_dso_, QString());
  const QString channel_captions[2] = {QStringLiteral("2 Channels"), QStringLiteral("4 Channels")};
  const QString channel_tips[2] = {QStringLiteral("2 channels scope"),
                                   QStringLiteral("4 channels scope")};
  for (int i = 0; i < 2; ++i) {
    QRadioButton* button =
        Named(new QRadioButton(channel_captions[i]), "optChannels", channel_tips[i]);
    button->setProperty(kIndexProperty, i);
    SetAccessibleName(button, button->text());
    opt_channels_[static_cast<std::size_t>(i)] = button;
  }
  chk_wgen_ = Named(new QCheckBox(QStringLiteral("WGEN")), "chkWGEN",
                    tr("Waveform generator option enabled"));
  SetAccessibleName(chk_wgen_, chk_wgen_->text());
  chk_dvm_ = Named(new QCheckBox(QStringLiteral("DVM")), "chkDVM",
                   QStringLiteral("Digital Voltmeter option enabled"));
  SetAccessibleName(chk_dvm_, chk_dvm_->text());
  scope_layout->addWidget(cbo_dso_, 0, 0, 1, 2);
  scope_layout->addWidget(opt_channels_[0], 1, 0);
  scope_layout->addWidget(opt_channels_[1], 1, 1);
  scope_layout->addWidget(chk_wgen_, 2, 0);
  scope_layout->addWidget(chk_dvm_, 2, 1);
  middle->addWidget(scope_frame);

  auto* algorithm_frame = Named(new QGroupBox(QStringLiteral("Algorithm")), "fraAlgorithm");
  SetAccessibleName(algorithm_frame, algorithm_frame->title());
  auto* algorithm_layout = new QVBoxLayout(algorithm_frame);
  const QString fft_captions[3] = {QStringLiteral("FFT A"), QStringLiteral("FFT"),
                                   QStringLiteral("DFT (VY SLOW !)")};
  const QString fft_tips[3] = {
      QString(), QStringLiteral("Fast Fourier Transform"),
      QStringLiteral("Discrete Fourier Transform (very fast computer required)")};
  fft_group_ = new QButtonGroup(this);
  for (int i = 0; i < 3; ++i) {
    QRadioButton* button = Named(new QRadioButton(fft_captions[i]), "optFFT", fft_tips[i]);
    button->setProperty(kIndexProperty, i);
    SetAccessibleName(button, button->text());
    fft_group_->addButton(button, i);
    opt_fft_[static_cast<std::size_t>(i)] = button;
    algorithm_layout->addWidget(button);
  }
  chk_auto_ = Named(new QCheckBox(QStringLiteral("Auto")), "chkAuto",
                    QStringLiteral("Fourier algorithm automatically selected"));
  SetAccessibleName(chk_auto_, chk_auto_->text());
  connect(chk_auto_, &QCheckBox::toggled, this, [this] { UpdateAlgorithmButtons(); });
  algorithm_layout->addWidget(chk_auto_);
  middle->addWidget(algorithm_frame);
  layout->addLayout(middle);

  auto* buttons = new QDialogButtonBox;
  cmd_ok_ = Named(new QPushButton(tr("OK")), "cmdOk");
  cmd_ok_->setDefault(true);
  SetAccessibleName(cmd_ok_, tr("OK"));
  cmd_cancel_ = Named(new QPushButton(QStringLiteral("&Cancel")), "cmdCancel");
  SetAccessibleName(cmd_cancel_, tr("Cancel"));
  buttons->addButton(cmd_ok_, QDialogButtonBox::AcceptRole);
  buttons->addButton(cmd_cancel_, QDialogButtonBox::RejectRole);
  connect(cmd_ok_, &QPushButton::clicked, this, [this] { cmdOk_Click(); });
  connect(cmd_cancel_, &QPushButton::clicked, this, &QDialog::reject);
  layout->addWidget(buttons);
}

void frmSettings::SetSearchOptions(const discovery::SearchOptions& options) {
  finder_->SetSearchOptions(options);
}

void frmSettings::FillControls() {
  txt_visa_->setText(QString::fromStdString(store_.Get("Setup", "VISA", "")));
  txt_help_->setPlainText(QString::fromLatin1(kVisaHelpText));

  // An algorithm outside 1..3 (a stored "x" reads as 0) selects no button.
  fft_group_->setExclusive(false);
  for (int i = 0; i < 3; ++i) {
    opt_fft_[static_cast<std::size_t>(i)]->setChecked(records_.Algorithm == i + 1);
  }
  fft_group_->setExclusive(true);

  chk_auto_->setChecked(records_.AutoAlgorithm);
  UpdateAlgorithmButtons();
  chk_dvm_->setChecked(records_.Scope.HasDvm);
  chk_wgen_->setChecked(records_.Scope.HasWgen);

  const int model = settings::ReadInteger(store_, "Setup", "DSO", "0");
  cbo_dso_->setCurrentIndex(model >= 0 && model < cbo_dso_->count() ? model : -1);

  // Only 2 and 4 exist; anything else is taken as the smaller scope, as the toolbar does.
  const int channels = settings::ReadInteger(store_, "Setup", "Channels", "2") == 4 ? 4 : 2;
  records_.Scope.ChannelCount = static_cast<std::int16_t>(channels);
  opt_channels_[channels == 4 ? 1 : 0]->setChecked(true);
}

void frmSettings::UpdateAlgorithmButtons() {
  // The automatic choice picks among the fast engines; only "FFT A" stays selectable by hand.
  const bool manual = !chk_auto_->isChecked();
  opt_fft_[1]->setEnabled(manual);
  opt_fft_[2]->setEnabled(manual);
}

void frmSettings::cmdOk_Click() {
  records_.Address = txt_visa_->text().trimmed().toStdString();
  store_.Set("Setup", "VISA", records_.Address);

  records_.Algorithm = 1 + fft_group_->checkedId();  // none selected: -1 -> 0
  store_.Set("FFT", "Algo", settings::NumberText(records_.Algorithm));

  records_.AutoAlgorithm = chk_auto_->isChecked();
  records_.Scope.HasDvm = chk_dvm_->isChecked();
  records_.Scope.HasWgen = chk_wgen_->isChecked();
  store_.Set("FFT", "Auto", settings::FlagText(records_.AutoAlgorithm));

  store_.Set("Setup", "DSO", settings::NumberText(cbo_dso_->currentIndex()));

  records_.Scope.ChannelCount = opt_channels_[0]->isChecked() ? 2 : 4;
  store_.Set("Setup", "Channels", records_.Scope.ChannelCount == 2 ? "2" : "4");

  store_.Set("Setup", "DVM", settings::FlagText(records_.Scope.HasDvm));
  store_.Set("Setup", "WGEN", settings::FlagText(records_.Scope.HasWgen));
  accept();
}

}  // namespace quarvelo::dialogs
