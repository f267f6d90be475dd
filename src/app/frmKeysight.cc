#include "app/frmKeysight.h"

#include <QCloseEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollArea>
#include <QStatusBar>
#include <QTabWidget>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>

#include "app/startup.h"
#include "app/macro_editing.h"
#include "app/twips.h"
#include "app/window_targets.h"
#include "control/qt/qt_tool_host.h"
#include "control/set_toolbar.h"
#include "control/spectrum_choices.h"
#include "dialogs/dialog_launcher.h"
#include "dialogs/frmSettings.h"
#include "platform/qt/activity_indicator.h"
#include "platform/qt/picture_box.h"
#include "platform/qt/qt_ui_services.h"
#include "platform/text/number_parse.h"

namespace quarvelo::app {
namespace {

constexpr char kIndexProperty[] = "index";

// Names a control for tests (objectName) and for screen readers (accessible name: its caption,
// or its tool tip when the caption is empty).
template <typename Widget>
Widget* Named(Widget* widget, const char* object_name, const QString& caption,
              const QString& tooltip) {
  widget->setObjectName(QString::fromLatin1(object_name));
  if (!tooltip.isEmpty()) widget->setToolTip(tooltip);
  widget->setAccessibleName(caption.isEmpty() ? tooltip : caption);
  return widget;
}

QString FromStd(const std::string& text) { return QString::fromStdString(text); }

}  // namespace

frmKeysight::frmKeysight(settings::SettingsStore& store, StartupPlatform& platform, QWidget* parent)
    : QMainWindow(parent), store_(store), platform_(platform) {
  setObjectName(QStringLiteral("frmKeysight"));
  setWindowTitle(QStringLiteral("QUARVELO"));
  BuildWidgets();
  ui_ = std::make_unique<qt::QtUiServices>(
      qt::QtUiWidgets{this, lbl_screen_, sha_activity_, tmr_refresh_, tmr_single_});
  tools_ = std::make_unique<control::QtToolHost>(this);
  link_ = std::make_unique<link::InstrumentLink>(
      session_, status_flags_,
      link::ScopeFields{scope_.ChannelCount, scope_.HasDvm, scope_.HasWgen,
                        scope_.ToolUpdateInProgress},
      *ui_, *tools_, store_, static_cast<link::LinkHooks&>(*this));
  BuildControl();
  BuildDisplay();
  BuildSweep();
  BuildFiles();
  dialogs_ = std::make_unique<dialogs::DialogLauncher>(
      dialogs::DialogServices{*link_, *readback_, scope_, *ui_, *tools_,
                              [this](bool restart) { RequestSweep(restart); }},
      this);
}

void frmKeysight::BuildFiles() {
  csv_host_ = std::make_unique<WindowCsvHost>(sweep_state_, spectrum_, *sweep_view_, *sweep_);
  csv_files_ = std::make_unique<files::CsvFiles>(files::CsvRecords{scope_, records_},
                                                 *csv_host_, *ui_, *tools_, data_folder_);
  image_panels_ = std::make_unique<WindowImagePanels>(*pic_screen_, *pic_keysight_);
  screen_images_ =
      std::make_unique<files::ScreenImages>(*link_, *ui_, *image_panels_, data_folder_);
}

void frmKeysight::BuildDisplay() {
  ScreenHostCalls calls;
  calls.sweep_mode = [this] { return sweep_state_.SweepMode; };
  calls.mixed_domain = [this] { return settings_.MixedDomain; };
  calls.spectrum_unit = [this] { return settings_.SpectrumUnit; };
  // The sweep's screen shows only the record's length; an FFT run plans its transform.
  calls.plan_transform = [this](int channel) {
    return analyzer_->PlanTransform(channel, sweep_state_.SweepMode,
                                    control::FftSettingsOf(settings_));
  };
  calls.mixed_domain_spectrum = [this](int first, int last) {
    analyzer_->MDISpectrum(first, last, control::FftSettingsOf(settings_));
  };
  calls.reapply_bandwidth_limit = [this] {
    dispatcher_->ApplyBandwidthLimit(ssr_bw_->isChecked(), txt_mhz_[2]->text().toStdString());
    return settings_.BandwidthLimitOn ? settings_.UpperLimitMhz * 1e6 : 0.0;
  };
  calls.send_fft_centre_span = [this](double centre_hz, double span_hz) {
    commands_->SetFftCenterSpan(centre_hz, span_hz);
  };
  calls.show_cursor_source_tool = [this](int channel) {
    const bool guard = scope_.ToolUpdateInProgress;
    scope_.ToolUpdateInProgress = true;
    for (int n = 1; n <= acquisition::kMaxChannels; ++n)
      tools_->SetToolState("ID_CSR" + std::to_string(n), n == channel);
    scope_.ToolUpdateInProgress = guard;
  };
  screen_ = std::make_unique<ScreenWiring>(*pic_screen_, pic_temp_, scope_, records_, spectrum_,
                                           *ui_, std::move(calls));
}

void frmKeysight::BuildSweep() {
  readback_hooks_ = std::make_unique<WindowReadbackHooks>(*tools_, session_.RemoteOn);
  readback_ = std::make_unique<acquisition::StateReadback>(*link_, scope_, records_, *ui_,
                                                            *tools_, *readback_hooks_);
  capture_ = std::make_unique<acquisition::WaveformCapture>(*link_, scope_, records_, *ui_,
                                                             *tools_);
  sweep_view_ = std::make_unique<SweepWindowView>(SweepWidgets{
      this, fra_fft_, fra_visa_, fra_activity_, pic_screen_, lbl_avg_count_, pgb_fft_});
  sweep_view_->AttachScreen(screen_->View(), screen_->State());
  sample_store_ = std::make_unique<RecordSampleStore>(records_);
  sweep_commands_ = std::make_unique<ControlSweepCommands>(*commands_, settings_, *tools_,
                                                           scope_.ToolUpdateInProgress);
  spectrum_host_ = std::make_unique<WindowSpectrumHost>(scope_, *sweep_commands_, *sweep_view_);
  analyzer_ = std::make_unique<spectrum::SpectrumAnalyzer>(
      spectrum_, workspace_, fourier_, *sample_store_, *spectrum_host_, *ui_,
      sweep_state_.StopRequested);
  sweep_ = std::make_unique<SweepCycle>(
      SweepParts{*link_, scope_, records_, *readback_, *capture_, spectrum_, *analyzer_, *ui_,
                 *tools_},
      *sweep_view_, *sweep_commands_, sweep_state_);
  connect(tmr_refresh_, &QTimer::timeout, this, [this] { sweep_->RefreshTick(); });
  connect(tmr_single_, &QTimer::timeout, this, [this] { sweep_->SingleTick(); });
  connect(cmd_stop_, &QPushButton::clicked, this, [this] { sweep_->cmdStop_Click(); });
}

void frmKeysight::BuildControl() {
  targets_ = std::make_unique<WindowTargets>(*this);
  commands_ = std::make_unique<control::ControlCommands>(*link_, scope_, *ui_, *tools_, *targets_);
  dispatcher_ = std::make_unique<control::ToolDispatcher>(*commands_, *link_, scope_, settings_,
                                                          *ui_, *tools_, *targets_);
  using control::QtToolHost;
  connect(tools_.get(), &QtToolHost::ToolClicked, this,
          [this](const QString& id) { dispatcher_->ToolClick(id.toStdString()); });
  connect(tools_.get(), &QtToolHost::ComboChanged, this,
          [this](const QString& id) { dispatcher_->ComboChange(id.toStdString()); });
  connect(tools_.get(), &QtToolHost::DropDownRequested, this,
          [this](const QString& id) { dispatcher_->DropDown(id.toStdString()); });
  connect(tools_.get(), &QtToolHost::DropDownClosed, this,
          [this](const QString& id) { dispatcher_->DropDownClosed(id.toStdString()); });
  connect(this, &frmKeysight::SetClicked, this,
          [this] { dispatcher_->SetClicked(txt_command_->text().toStdString()); });
  connect(this, &frmKeysight::BandwidthLimitClicked, this, [this](bool down) {
    dispatcher_->BandwidthLimitClicked(down, txt_mhz_[2]->text().toStdString());
  });
  // The entry box edits the upper limit of the user's spectrum choices.
  connect(txt_mhz_[2], &QLineEdit::textEdited, this, [this](const QString& text) {
    settings_.UpperLimitMhz = text::LeadingNumber(text.toStdString());
  });
  connect(this, &frmKeysight::MacroPressed, this, [this](int index, Qt::MouseButton button) {
    if (index < 0 || index >= kMacroCount) return;
    const int n = index + 1;
    Macro& macro = settings_.Macros[static_cast<std::size_t>(n)];
    if (button == Qt::LeftButton) {
      dispatcher_->RunMacro(macro.Command1, macro.Command2, macro.SweepAfter);
    } else if (button == Qt::RightButton && EditMacro(this, store_, n, macro)) {
      SetMacroCaption(n, macro.Caption);
    }
  });
}

frmKeysight::~frmKeysight() {
  // A window destroyed without being closed (the program asked to quit) still saves.
  if (loaded_ && !unloaded_) Form_Unload();
}

ui::UiServices& frmKeysight::Ui() { return *ui_; }
ui::ToolHost& frmKeysight::Tools() { return *tools_; }

void frmKeysight::BuildWidgets() {
  tabs_ = new QTabWidget(this);
  tabs_->setObjectName(QStringLiteral("SSActiveTabs1"));
  tabs_->setAccessibleName(tr("Views"));
  tabs_->setDocumentMode(true);
  tabs_->addTab(BuildScopeTab(), tr("Oscilloscope"));

  pic_keysight_ = Named(new qt::PictureBox(false, QColor(0, 0, 0)), "picKeysight", QString(),
                        tr("Screen image of the oscilloscope or of this program"));
  auto* scroll = new QScrollArea;
  scroll->setObjectName(QStringLiteral("ScreenShootArea"));
  scroll->setWidget(pic_keysight_);
  scroll->setAlignment(Qt::AlignCenter);
  scroll->setBackgroundRole(QPalette::Dark);
  tabs_->addTab(scroll, QStringLiteral("ScreenShoot"));
  setCentralWidget(tabs_);

  // Labels whose text changes leave their accessible name empty: screen readers then read the
  // current text (and are told when it changes); the description says what the label is.
  lbl_screen_ = Named(new QLabel, "lblScreen", QString(), QString());
  lbl_screen_->setAccessibleDescription(tr("Status"));
  lbl_screen_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  lbl_screen_->setMinimumWidth(100);
  statusBar()->addWidget(lbl_screen_, 1);
  statusBar()->setSizeGripEnabled(true);

  tmr_refresh_ = new QTimer(this);
  tmr_refresh_->setObjectName(QStringLiteral("tmrRefresh"));
  tmr_refresh_->setInterval(kTimerIntervalMs);
  connect(tmr_refresh_, &QTimer::timeout, this, &frmKeysight::RefreshTimerTick);
  tmr_single_ = new QTimer(this);
  tmr_single_->setObjectName(QStringLiteral("tmrSingle"));
  tmr_single_->setInterval(kTimerIntervalMs);
  connect(tmr_single_, &QTimer::timeout, this, &frmKeysight::SingleTimerTick);
}

QWidget* frmKeysight::BuildScopeTab() {
  auto* page = new QWidget;
  page->setObjectName(QStringLiteral("OscilloscopePage"));
  auto* layout = new QVBoxLayout(page);
  layout->setContentsMargins(4, 4, 4, 4);
  layout->setSpacing(4);

  pic_screen_ = Named(new qt::PictureBox(true, QColor(0, 0, 0)), "picScreen", QString(),
                      tr("Oscilloscope screen and spectrum"));
  pic_screen_->setMinimumSize(320, 200);
  pic_screen_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
  layout->addWidget(pic_screen_, 1);

  auto* bottom = new QHBoxLayout;
  bottom->setSpacing(6);

  fra_activity_ = Named(new QGroupBox(tr("Link")), "fraActivity", tr("Link"), QString());
  auto* activity_layout = new QHBoxLayout(fra_activity_);
  sha_activity_ = Named(new qt::ActivityIndicator, "shaActivity", QString(),
                        tr("Link activity: grey off, green on, red front-panel key"));
  activity_layout->addWidget(sha_activity_);
  bottom->addWidget(fra_activity_);

  fra_fft_ = BuildFftFrame();
  fra_visa_ = BuildVisaFrame();
  bottom->addWidget(fra_fft_, 1);
  bottom->addWidget(fra_visa_, 1);
  fra_fft_->hide();  // the command frame shows until a spectrum is drawn

  bottom->addWidget(BuildAveragingBox());

  cmd_set_ = Named(new QPushButton(tr("Set")), "cmdSet", tr("Set"),
                   tr("Send the command line, run a sweep, or set centre and span"));
  cmd_set_->setMinimumHeight(48);
  connect(cmd_set_, &QPushButton::clicked, this, &frmKeysight::SetClicked);
  bottom->addWidget(cmd_set_);

  layout->addLayout(bottom);
  return page;
}

QGroupBox* frmKeysight::BuildFftFrame() {
  auto* frame = Named(new QGroupBox(tr("Spectrum")), "fraFFT", tr("Spectrum"), QString());
  auto* grid = new QGridLayout(frame);
  const QString tooltips[3] = {tr("Center Frequency (MHz)"), tr("Span width (MHz)"),
                               tr("Upper Limit or Stop frequency (MHz)")};
  const QString labels[3] = {tr("Center"), tr("Span"), QString()};
  for (int i = 0; i < 3; ++i) {
    QLineEdit* box = Named(new QLineEdit, "txtMHz", QString(), tooltips[i]);
    box->setProperty(kIndexProperty, i);
    box->setMaximumWidth(110);
    txt_mhz_[static_cast<std::size_t>(i)] = box;
  }
  ssr_bw_ = Named(new QToolButton, "ssrBW", tr("BW Limit"), tr("Set Bandwidth limit"));
  ssr_bw_->setText(tr("BW Limit"));
  ssr_bw_->setCheckable(true);
  ssr_bw_->setToolButtonStyle(Qt::ToolButtonTextOnly);
  connect(ssr_bw_, &QToolButton::clicked, this, [this](bool down) {
    if (loading_) return;
    emit BandwidthLimitClicked(down);
  });
  grid->addWidget(new QLabel(labels[0]), 0, 0);
  grid->addWidget(txt_mhz_[0], 0, 1);
  grid->addWidget(new QLabel(tr("MHz")), 0, 2);
  grid->addWidget(new QLabel(labels[1]), 1, 0);
  grid->addWidget(txt_mhz_[1], 1, 1);
  grid->addWidget(new QLabel(tr("MHz")), 1, 2);
  grid->addWidget(ssr_bw_, 0, 3);
  grid->addWidget(txt_mhz_[2], 1, 3);
  grid->addWidget(new QLabel(tr("MHz")), 1, 4);
  grid->setColumnStretch(5, 1);
  return frame;
}

QGroupBox* frmKeysight::BuildVisaFrame() {
  auto* frame = Named(new QGroupBox(tr("VISA Command - Macro commands")), "fraVISA",
                      tr("VISA Command - Macro commands"), QString());
  auto* grid = new QGridLayout(frame);
  grid->setSpacing(4);
  for (int k = 0; k < kMacroCount; ++k) {
    const QString caption = QStringLiteral("MAC%1").arg(k + 1);
    auto* button = Named(new QPushButton(caption), "cmdMac", caption,
                         tr("Left click runs the macro, right click edits it"));
    button->setProperty(kIndexProperty, k);
    button->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(button, &QPushButton::clicked, this,
            [this, k] { emit MacroPressed(k, Qt::LeftButton); });
    connect(button, &QPushButton::customContextMenuRequested, this,
            [this, k] { emit MacroPressed(k, Qt::RightButton); });
    cmd_mac_[static_cast<std::size_t>(k)] = button;
    grid->addWidget(button, k / 5, k % 5);
  }
  txt_command_ = Named(new QLineEdit, "txtCommand", QString(), tr("VISA command to send"));
  txt_command_->setPlaceholderText(tr("SCPI command, e.g. :RUN"));
  grid->addWidget(txt_command_, 2, 0, 1, 5);
  return frame;
}

QWidget* frmKeysight::BuildAveragingBox() {
  auto* box = new QWidget;
  box->setObjectName(QStringLiteral("AveragingBox"));
  auto* layout = new QVBoxLayout(box);
  layout->setContentsMargins(0, 0, 0, 0);
  lbl_avg_count_ = Named(new QLabel(QStringLiteral("0")), "lblAVGCount", QString(), QString());
  lbl_avg_count_->setToolTip(tr("Averaging pass"));
  lbl_avg_count_->setAccessibleDescription(tr("Averaging pass"));
  lbl_avg_count_->setAlignment(Qt::AlignCenter);
  QFont font = lbl_avg_count_->font();
  font.setPointSize(font.pointSize() + 4);
  font.setBold(true);
  lbl_avg_count_->setFont(font);
  pgb_fft_ = Named(new QProgressBar, "pgbFFT", QString(), tr("Fourier transform progress"));
  pgb_fft_->setRange(0, 32767);
  pgb_fft_->setValue(0);
  pgb_fft_->setTextVisible(false);
  pgb_fft_->setMaximumHeight(12);
  cmd_stop_ =
      Named(new QPushButton(tr("Stop averaging")), "cmdStop", tr("Stop averaging"), QString());
  connect(cmd_stop_, &QPushButton::clicked, this, &frmKeysight::StopAveragingClicked);
  layout->addWidget(lbl_avg_count_);
  layout->addWidget(pgb_fft_);
  layout->addWidget(cmd_stop_);
  return box;
}

bool frmKeysight::Form_Load() {
  const StartupServices services{store_, *tools_, *this, platform_};
  const StartupRecords records{settings_, scope_, session_.Address, data_folder_};
  const StartupResult result = RunStartup(
      services, records,
      WindowCaption(QUARVELO_VERSION_MAJOR, QUARVELO_VERSION_MINOR, QUARVELO_VERSION_PATCH));
  loaded_ = result == StartupResult::kRunning;
  return loaded_;
}

void frmKeysight::ShowSettingsDialog() {
  CloseInstrument();
  {
    dialogs::frmSettings dialog(
        store_,
        dialogs::SettingsDialogRecords{session_.Address, settings_.Algorithm,
                                       settings_.AutoAlgorithm, scope_},
        this);
    dialog.exec();
  }
  RebuildToolbar();
}

void frmKeysight::Form_Unload() {
  unloaded_ = true;
  const StartupServices services{store_, *tools_, *this, platform_};
  const StartupRecords records{settings_, scope_, session_.Address, data_folder_};
  RunShutdown(services, records);
}

void frmKeysight::closeEvent(QCloseEvent* event) {
  event->accept();
  if (loaded_ && !unloaded_) Form_Unload();
}

void frmKeysight::SetCaption(const std::string& caption) { setWindowTitle(FromStd(caption)); }

TwipsGeometry frmKeysight::Geometry() const {
  return {PixelsToTwips(y()), PixelsToTwips(x()), PixelsToTwips(height()), PixelsToTwips(width())};
}

void frmKeysight::Move(int top, int left) { move(TwipsToPixels(left), TwipsToPixels(top)); }

void frmKeysight::Resize(std::optional<int> height, std::optional<int> width) {
  const int new_height = height.has_value() ? TwipsToPixels(*height) : this->height();
  const int new_width = width.has_value() ? TwipsToPixels(*width) : this->width();
  resize(new_width, new_height);
}

bool frmKeysight::IsMinimised() const { return isMinimized(); }

void frmKeysight::SetBandwidthLimit(bool down, const std::string& upper_limit_text) {
  ssr_bw_->setChecked(down);
  txt_mhz_[2]->setText(FromStd(upper_limit_text));
}

void frmKeysight::SetMacroCaption(int n, const std::string& caption) {
  if (n < 1 || n > kMacroCount) return;
  QPushButton* button = cmd_mac_[static_cast<std::size_t>(n - 1)];
  button->setText(FromStd(caption));
  // An empty caption leaves a blank button; screen readers still need a name for it.
  button->setAccessibleName(caption.empty() ? button->toolTip() : FromStd(caption));
}

void frmKeysight::StartDisplay() {
  pic_screen_->Clear();
  pic_temp_ = QImage(pic_screen_->Image().size(), QImage::Format_RGB32);
  pic_temp_.fill(Qt::black);
  screen_->View().StartDisplay();  // the empty frame; the last zoom was a reset
}

void frmKeysight::RebuildToolbar() {
  control::SetToolbar(*tools_, store_, session_.RemoteOn, settings_, scope_);
}

void frmKeysight::CloseInstrument() { link_->CloseInstrument(); }

void frmKeysight::RequestSweep(bool restart) { sweep_->ID_Sweep(restart); }

void frmKeysight::CloseWgenDialog() {
  if (dialogs_ != nullptr) dialogs_->CloseWgenDialog();
}

void frmKeysight::EndProgram() { close(); }

}  // namespace quarvelo::app
