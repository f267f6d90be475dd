// The settings dialog's "Find" part: a button that searches for instruments (USB and the
// local networks), a list of what it found (identity and resource string) and a status line.
// The search runs on the UI thread in short steps with the events processed between them; the
// button cancels a running search.
#ifndef QUARVELO_DIALOGS_INSTRUMENT_FINDER_H_
#define QUARVELO_DIALOGS_INSTRUMENT_FINDER_H_

#include <QWidget>

#include "platform/discovery/instrument_search.h"
#include "platform/discovery/libusb_lister.h"

class QLabel;
class QListWidget;
class QPushButton;

namespace quarvelo::dialogs {

class InstrumentFinder : public QWidget {
  Q_OBJECT

 public:
  explicit InstrumentFinder(QWidget* parent = nullptr);

  // Where and how long to search (the local networks' broadcast, port 111, two seconds).
  void SetSearchOptions(const discovery::SearchOptions& options) { options_ = options; }
  bool searching() const { return searching_; }

 signals:
  // The user picked a found instrument's resource string.
  void Picked(const QString& resource);

 protected:
  void hideEvent(QHideEvent* event) override;

 private:
  void cmdFind_Click();
  void ShowResults(const discovery::InstrumentSearch& search);

  discovery::SearchOptions options_;
  discovery::LibusbLister usb_;
  bool searching_ = false;
  bool cancel_requested_ = false;
  QPushButton* cmd_find_ = nullptr;
  QListWidget* lst_found_ = nullptr;
  QLabel* lbl_find_ = nullptr;
};

}  // namespace quarvelo::dialogs

#endif  // QUARVELO_DIALOGS_INSTRUMENT_FINDER_H_
