// SIGINT, SIGTERM and SIGHUP (Ctrl-C in a terminal, a logout, `kill`) close the main window in
// order, so that the shutdown sequence still saves the settings and closes the link.
#ifndef QUARVELO_APP_QUIT_SIGNALS_H_
#define QUARVELO_APP_QUIT_SIGNALS_H_

#include <QObject>
#include <QSocketNotifier>
#include <memory>

class QWidget;

namespace quarvelo::app {

class QuitSignals : public QObject {
  Q_OBJECT

 public:
  // Closes `window` when one of the signals arrives. One instance per process.
  explicit QuitSignals(QWidget* window);
  ~QuitSignals() override;
  QuitSignals(const QuitSignals&) = delete;
  QuitSignals& operator=(const QuitSignals&) = delete;

 private:
  QWidget* window_;
  std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace quarvelo::app

#endif  // QUARVELO_APP_QUIT_SIGNALS_H_
