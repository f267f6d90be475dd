// The main window and composition root: owns the process-wide records and the services for
// the whole run and lends them to the subsystems. Controls carry their names as objectName
// (`picScreen`, `lblScreen`, `cmdStop` ...); control arrays (`cmdMac`, `txtMHz`) share one
// objectName and carry their index in the dynamic property "index".
#ifndef QUARVELO_APP_FRMKEYSIGHT_H_
#define QUARVELO_APP_FRMKEYSIGHT_H_

#include <QImage>
#include <QMainWindow>
#include <array>
#include <memory>
#include <string>

#include "acquisition/capture.h"
#include "acquisition/readback.h"
#include "acquisition/scope_state.h"
#include "acquisition/waveform_record.h"
#include "app/app_settings.h"
#include "app/main_window_view.h"
#include "app/window_targets.h"
#include "app/sweep_adapters.h"
#include "app/sweep_cycle.h"
#include "app/sweep_state.h"
#include "app/sweep_window_view.h"
#include "app/screen_wiring.h"
#include "app/files_adapters.h"
#include "control/control_commands.h"
#include "control/tool_dispatcher.h"
#include "link/instrument_link.h"
#include "link/instrument_session.h"
#include "link/link_hooks.h"
#include "link/status_flags.h"
#include "platform/settings/settings_store.h"
#include "platform/ui/tool_host.h"
#include "platform/ui/ui_services.h"
#include "spectrum/cls_fourier.h"
#include "spectrum/fourier_workspace.h"
#include "spectrum/spectrum.h"
#include "spectrum/spectrum_analyzer.h"

class QGroupBox;
class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QTabWidget;
class QTimer;
class QToolButton;

namespace quarvelo::control {
class QtToolHost;
}  // namespace quarvelo::control

namespace quarvelo::dialogs {
class DialogLauncher;
}  // namespace quarvelo::dialogs

namespace quarvelo::qt {
class ActivityIndicator;
class PictureBox;
class QtUiServices;
}  // namespace quarvelo::qt

namespace quarvelo::app {

inline constexpr int kTimerIntervalMs = 1000;

class frmKeysight : public QMainWindow, private MainWindowView, private link::LinkHooks {
  Q_OBJECT

 public:
  // The store and the platform outlive the window.
  frmKeysight(settings::SettingsStore& store, StartupPlatform& platform, QWidget* parent = nullptr);
  ~frmKeysight() override;

  // Form_Load. False when another instance is running: the program ends at once.
  bool Form_Load();
  // The settings tool: closes the link, shows the settings dialog modally, then rebuilds the
  // toolbar so that model, channel count and options take effect.
  void ShowSettingsDialog();

  ui::UiServices& Ui();
  ui::ToolHost& Tools();
  control::QtToolHost& Toolbar() { return *tools_; }
  link::InstrumentLink& Link() { return *link_; }
  link::InstrumentSession& Session() { return session_; }
  settings::SettingsStore& Store() { return store_; }
  AppSettings& Settings() { return settings_; }
  acquisition::ScopeState& Scope() { return scope_; }
  const std::string& DataFolder() const { return data_folder_; }
  bool Loading() const { return loading_; }

  qt::PictureBox* picScreen() const { return pic_screen_; }
  qt::PictureBox* picKeysight() const { return pic_keysight_; }
  QImage& picTemp() { return pic_temp_; }

  // The toolbar's dispatchers and the front-panel command set.
  control::ToolDispatcher& Dispatcher() { return *dispatcher_; }
  control::ControlCommands& Commands() { return *commands_; }

  // Sweep, FFT run and the records they fill.
  SweepCycle& Sweep() { return *sweep_; }
  SweepState& SweepFlags() { return sweep_state_; }
  acquisition::WaveformRecords& Records() { return records_; }
  acquisition::StateReadback& Readback() { return *readback_; }
  acquisition::WaveformCapture& Capture() { return *capture_; }
  spectrum::Spectrum& SpectrumRecord() { return spectrum_; }
  // The screen drawing with its markers, cursors and layout.
  ScreenWiring& Screen() { return *screen_; }
  spectrum::FourierWorkspace& Workspace() { return workspace_; }
  spectrum::clsFourier& Fourier() { return fourier_; }
  spectrum::SpectrumAnalyzer& Analyzer() { return *analyzer_; }

 signals:
  // The user clicked the bandwidth-limit button (not reported while loading).
  void BandwidthLimitClicked(bool down);
  void StopAveragingClicked();
  void SetClicked();
  void MacroPressed(int index, Qt::MouseButton button);  // index 0..9
  void RefreshTimerTick();
  void SingleTimerTick();

 protected:
  // Form_QueryUnload allows every close; Form_Unload then runs the shutdown once.
  void closeEvent(QCloseEvent* event) override;

 private:
  // Forwards the toolbar's operations to the objects that own them.
  friend class WindowTargets;

  // MainWindowView.
  void SetLoading(bool loading) override { loading_ = loading; }
  void SetCaption(const std::string& caption) override;
  TwipsGeometry Geometry() const override;
  void Move(int top, int left) override;
  void Resize(std::optional<int> height, std::optional<int> width) override;
  bool IsMinimised() const override;
  void SetBandwidthLimit(bool down, const std::string& upper_limit_text) override;
  void SetMacroCaption(int n, const std::string& caption) override;
  void StartDisplay() override;
  void RebuildToolbar() override;
  void CloseInstrument() override;

  // LinkHooks.
  void RequestSweep(bool restart) override;
  void CloseWgenDialog() override;
  void EndProgram() override;

  void BuildWidgets();
  QWidget* BuildScopeTab();
  QGroupBox* BuildFftFrame();
  QGroupBox* BuildVisaFrame();
  QWidget* BuildAveragingBox();
  void Form_Unload();
  // The command set and the dispatchers, with the toolbar's and the window's buttons wired.
  void BuildControl();
  // The screen drawing, its upward answers and picScreen's mouse (before the sweep).
  void BuildDisplay();
  void BuildSweep();
  void BuildFiles();

  settings::SettingsStore& store_;
  StartupPlatform& platform_;

  // Records owned for the whole run.
  AppSettings settings_;
  acquisition::ScopeState scope_;
  link::InstrumentSession session_;
  link::StatusFlags status_flags_;
  std::string data_folder_;
  QImage pic_temp_;

  bool loading_ = false;
  bool loaded_ = false;
  bool unloaded_ = false;

  // Widgets (owned by Qt's parent chain).
  QTabWidget* tabs_ = nullptr;
  qt::PictureBox* pic_screen_ = nullptr;
  qt::PictureBox* pic_keysight_ = nullptr;
  QLabel* lbl_screen_ = nullptr;
  qt::ActivityIndicator* sha_activity_ = nullptr;
  QGroupBox* fra_activity_ = nullptr;
  QGroupBox* fra_fft_ = nullptr;
  QGroupBox* fra_visa_ = nullptr;
  QToolButton* ssr_bw_ = nullptr;
  std::array<QLineEdit*, 3> txt_mhz_{};
  QPushButton* cmd_set_ = nullptr;
  std::array<QPushButton*, kMacroCount> cmd_mac_{};
  QLineEdit* txt_command_ = nullptr;
  QProgressBar* pgb_fft_ = nullptr;
  QPushButton* cmd_stop_ = nullptr;
  QLabel* lbl_avg_count_ = nullptr;
  QTimer* tmr_refresh_ = nullptr;
  QTimer* tmr_single_ = nullptr;

  // In this order: the link uses the UI services and the tools.
  std::unique_ptr<qt::QtUiServices> ui_;
  std::unique_ptr<control::QtToolHost> tools_;
  std::unique_ptr<link::InstrumentLink> link_;

  // The toolbar's side (BuildControl): the operations of the layers above it, the command
  // set and the three dispatchers.
  std::unique_ptr<WindowTargets> targets_;
  std::unique_ptr<control::ControlCommands> commands_;
  std::unique_ptr<control::ToolDispatcher> dispatcher_;

  // The sweep's records and subsystems, built after the link (BuildSweep).
  acquisition::WaveformRecords records_;
  spectrum::Spectrum spectrum_;
  spectrum::FourierWorkspace workspace_;
  spectrum::clsFourier fourier_;
  SweepState sweep_state_;
  // The screen drawing with its markers, cursors and layout (BuildDisplay); the sweep draws
  // through it.
  std::unique_ptr<ScreenWiring> screen_;
  std::unique_ptr<WindowReadbackHooks> readback_hooks_;
  std::unique_ptr<acquisition::StateReadback> readback_;
  std::unique_ptr<acquisition::WaveformCapture> capture_;
  std::unique_ptr<SweepWindowView> sweep_view_;
  std::unique_ptr<RecordSampleStore> sample_store_;
  std::unique_ptr<WindowSpectrumHost> spectrum_host_;
  std::unique_ptr<spectrum::SpectrumAnalyzer> analyzer_;
  std::unique_ptr<ControlSweepCommands> sweep_commands_;
  std::unique_ptr<SweepCycle> sweep_;

  // CSV waveform files and screen images (BuildFiles), after the sweep they use.
  std::unique_ptr<WindowCsvHost> csv_host_;
  std::unique_ptr<files::CsvFiles> csv_files_;
  std::unique_ptr<WindowImagePanels> image_panels_;
  std::unique_ptr<files::ScreenImages> screen_images_;

  // The dialogs, last: they use the records and subsystems above and go before them.
  std::unique_ptr<dialogs::DialogLauncher> dialogs_;
};

}  // namespace quarvelo::app

#endif  // QUARVELO_APP_FRMKEYSIGHT_H_
