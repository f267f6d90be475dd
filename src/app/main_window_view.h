// What the start-up and shutdown sequences do to the main window. frmKeysight implements it
// over its widgets; tests implement it in memory.
#ifndef QUARVELO_APP_MAIN_WINDOW_VIEW_H_
#define QUARVELO_APP_MAIN_WINDOW_VIEW_H_

#include <optional>
#include <string>

namespace quarvelo::app {

// Window position and size in twips (1/1440 inch, 15 per pixel).
struct TwipsGeometry {
  int Top = 0;
  int Left = 0;
  int Height = 0;
  int Width = 0;
  bool operator==(const TwipsGeometry&) const = default;
};

class MainWindowView {
 public:
  virtual ~MainWindowView() = default;

  // While loading, clicks reported by the bandwidth-limit button are ignored.
  virtual void SetLoading(bool loading) = 0;
  virtual void SetCaption(const std::string& caption) = 0;
  virtual TwipsGeometry Geometry() const = 0;
  virtual void Move(int top, int left) = 0;
  // Only the given dimensions change.
  virtual void Resize(std::optional<int> height, std::optional<int> width) = 0;
  virtual bool IsMinimised() const = 0;

  // The ribbon button `ssrBW` and the upper-limit entry box beside it.
  virtual void SetBandwidthLimit(bool down, const std::string& upper_limit_text) = 0;

  virtual void SetMacroCaption(int n, const std::string& caption) = 0;  // n = 1..10
  // Start values of the display and spectrum parts, the status panel drawn once, and the
  // off-screen picture sized like the drawing surface.
  virtual void StartDisplay() = 0;
  // SetToolbar: model, channel count and options from the store.
  virtual void RebuildToolbar() = 0;
  virtual void CloseInstrument() = 0;
};

// Where the program keeps its files, and the one-instance rule.
class StartupPlatform {
 public:
  virtual ~StartupPlatform() = default;
  // The data folder's path, or nothing when the per-user folder cannot be determined.
  virtual std::optional<std::string> UserDataFolder() = 0;
  // The program's own folder: the data folder when the per-user one is unavailable.
  virtual std::string ProgramFolder() = 0;
  // Creates the folder if missing; false on failure.
  virtual bool CreateFolder(const std::string& path) = 0;
  // Takes the single-instance lock in `data_folder`; false when another instance holds it.
  virtual bool AcquireInstanceLock(const std::string& data_folder) = 0;
};

}  // namespace quarvelo::app

#endif  // QUARVELO_APP_MAIN_WINDOW_VIEW_H_
