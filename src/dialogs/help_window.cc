#include "dialogs/help_window.h"

#include <QTextBrowser>
#include <QToolBar>
#include <QUrl>
#include <QVBoxLayout>

#include "dialogs/dialog_widgets.h"
#include "dialogs/help.h"

// The guide's pages live in the library's resources; a static library must register them.
static void InitHelpResources() { Q_INIT_RESOURCE(help); }

namespace quarvelo::dialogs {

frmHelp::frmHelp(ui::UiServices& ui) : QWidget(nullptr), ui_(ui) {
  InitHelpResources();
  setObjectName(QStringLiteral("frmHelp"));
  setWindowTitle(QStringLiteral("QUARVELO Help"));
  setAttribute(Qt::WA_DeleteOnClose);
  resize(820, 640);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  auto* bar = new QToolBar;
  browser_ = Named(new QTextBrowser, "txtHelp", QString(), QStringLiteral("User's guide"));
  browser_->setOpenLinks(false);
  connect(browser_, &QTextBrowser::anchorClicked, this, &frmHelp::OpenLink);
  QAction* back = bar->addAction(QStringLiteral("Back"), browser_, &QTextBrowser::backward);
  QAction* forward = bar->addAction(QStringLiteral("Forward"), browser_, &QTextBrowser::forward);
  bar->addAction(QStringLiteral("Contents"), this, &frmHelp::ShowIndex);
  back->setEnabled(false);
  forward->setEnabled(false);
  connect(browser_, &QTextBrowser::backwardAvailable, back, &QAction::setEnabled);
  connect(browser_, &QTextBrowser::forwardAvailable, forward, &QAction::setEnabled);
  layout->addWidget(bar);
  layout->addWidget(browser_);
  ShowIndex();
}

void frmHelp::ShowIndex() { browser_->setSource(QUrl(QString::fromLatin1(kHelpIndex))); }

void frmHelp::OpenLink(const QUrl& url) {
  const QUrl target = browser_->source().resolved(url);
  if (target.scheme() == QLatin1String("qrc")) {
    browser_->setSource(target);
  } else {
    OpenDocumentChecked(target.toString().toStdString(), ui_);
  }
}

}  // namespace quarvelo::dialogs
