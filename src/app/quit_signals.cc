#include "app/quit_signals.h"

#include <sys/socket.h>
#include <unistd.h>

#include <QApplication>
#include <QWidget>
#include <csignal>

namespace quarvelo::app {
namespace {

// A signal handler may only do async-signal-safe work: it writes one byte into a socket pair
// whose other end the event loop watches. The descriptors live as long as the process.
int signal_pipe[2] = {-1, -1};

void OnSignal(int) {
  const char byte = 1;
  [[maybe_unused]] const ssize_t written = ::write(signal_pipe[0], &byte, 1);
}

}  // namespace

QuitSignals::QuitSignals(QWidget* window) : window_(window) {
  if (signal_pipe[0] < 0 && ::socketpair(AF_UNIX, SOCK_STREAM, 0, signal_pipe) != 0) return;
  notifier_ = std::make_unique<QSocketNotifier>(signal_pipe[1], QSocketNotifier::Read);
  connect(notifier_.get(), &QSocketNotifier::activated, this, [this] {
    char byte = 0;
    [[maybe_unused]] const ssize_t read_bytes = ::read(signal_pipe[1], &byte, 1);
    if (window_ != nullptr) window_->close();
    // Open dialogs go as well, as if cancelled; otherwise the program would stay up for them.
    QApplication::closeAllWindows();
  });
  struct sigaction action {};
  action.sa_handler = OnSignal;
  sigemptyset(&action.sa_mask);
  action.sa_flags = SA_RESTART;
  for (int signal_number : {SIGINT, SIGTERM, SIGHUP}) sigaction(signal_number, &action, nullptr);
}

QuitSignals::~QuitSignals() {
  struct sigaction action {};
  action.sa_handler = SIG_DFL;
  sigemptyset(&action.sa_mask);
  for (int signal_number : {SIGINT, SIGTERM, SIGHUP}) sigaction(signal_number, &action, nullptr);
}

}  // namespace quarvelo::app
