// Opening documents with the desktop's opener (caught here by URL handlers), the built-in
// user's guide and the about box.
#include <gtest/gtest.h>

#include <QDesktopServices>
#include <QFile>
#include <QLabel>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTextBrowser>
#include <QUrl>

#include "dialogs/frmAbout.h"
#include "dialogs/help.h"
#include "dialogs/help_window.h"
#include "platform/ui/recording_ui.h"

namespace quarvelo::dialogs {

// Stands in for the desktop's opener: records what it was asked to open.
class UrlCatcher : public QObject {
  Q_OBJECT

 public:
  QList<QUrl> opened;

 public slots:
  void Open(const QUrl& url) { opened << url; }
};

namespace {

class HelpTest : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* scheme : {"file", "https"})
      QDesktopServices::setUrlHandler(scheme, &catcher_, "Open");
  }
  void TearDown() override {
    for (const char* scheme : {"file", "https"}) QDesktopServices::unsetUrlHandler(scheme);
  }

  UrlCatcher catcher_;
  ui::RecordingUi ui_;
  QTemporaryDir dir_;
};

TEST_F(HelpTest, OpenDocumentChecksLocalFilesAndReportsFailuresInWords) {
  ASSERT_TRUE(QFile(dir_.path() + "/notes.pdf").open(QIODevice::WriteOnly));
  const std::string folder = dir_.path().toStdString();
  const struct {
    std::string target;
    std::string opened;  // the address handed to the desktop's opener, "" when none
    const char* message;
  } cases[] = {
      {folder + "/notes.pdf", "file://" + folder + "/notes.pdf", ""},
      {"https://www.keysight.com", "https://www.keysight.com", ""},
      {folder + "/missing.pdf", "", "File not found"},
      {folder + "/no-such-folder/missing.pdf", "", "Path not found"},
      {"   ", "", "File not found"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.target);
    catcher_.opened.clear();
    ui_.ClearRecords();
    OpenDocumentChecked(c.target, ui_);
    QString opened;
    for (const QUrl& url : catcher_.opened) opened += url.toString() + " ";
    EXPECT_EQ(opened.trimmed().toStdString(), c.opened);
    std::string shown;  // the messages, a plain box each
    for (const ui::RecordedMessage& m : ui_.messages())
      shown += m.text + (m.icon == ui::MessageIcon::kNone ? "" : " with an icon");
    EXPECT_EQ(shown, c.message);
  }
}

TEST_F(HelpTest, GuideOpensAtItsIndexAndEveryPageLinkLeadsToAPageOfTheGuide) {
  frmHelp help(ui_);
  auto* browser = help.findChild<QTextBrowser*>("txtHelp");
  ASSERT_NE(browser, nullptr);
  EXPECT_EQ(browser->source(), QUrl(kHelpIndex));
  EXPECT_EQ(browser->documentTitle(), "QUARVELO User's Guide");

  const QRegularExpression href(QStringLiteral("href=\"([^\"#]*)(#[^\"]*)?\""));
  QStringList pages = {QStringLiteral(":/help/index.html")};
  int links = 0;
  for (qsizetype i = 0; i < pages.size(); ++i) {
    QFile page(pages[i]);
    ASSERT_TRUE(page.open(QIODevice::ReadOnly)) << pages[i].toStdString();
    const QString html = QString::fromUtf8(page.readAll());
    for (const auto& match : href.globalMatch(html)) {
      const QString target = match.captured(1);
      if (target.isEmpty() || target.contains(QLatin1Char(':'))) continue;  // same page, web
      const QString path = QStringLiteral(":/help/") + target;
      ++links;
      EXPECT_TRUE(QFile::exists(path)) << pages[i].toStdString() << " -> " << path.toStdString();
      if (QFile::exists(path) && !pages.contains(path)) pages << path;
    }
  }
  EXPECT_GE(pages.size(), 7);
  EXPECT_GT(links, 20);

  emit browser->anchorClicked(QUrl(QStringLiteral("troubleshooting.html")));
  EXPECT_EQ(browser->source(), QUrl(QStringLiteral("qrc:/help/troubleshooting.html")));
  emit browser->anchorClicked(QUrl(QStringLiteral("https://www.keysight.com")));
  EXPECT_EQ(catcher_.opened, QList<QUrl>{QUrl(QStringLiteral("https://www.keysight.com"))});
}

TEST_F(HelpTest, AboutBoxShowsTheBuildsVersionAndOpensTheLink) {
  frmAbout about(ui_);
  EXPECT_EQ(about.findChild<QLabel*>("lblVersion")->text(),
            QStringLiteral("QUARVELO V") + QStringLiteral(QUARVELO_TEST_VERSION));
  emit about.findChild<QLabel*>("lblLink")->linkActivated(QString::fromLatin1(kWebAddress));
  EXPECT_EQ(catcher_.opened, QList<QUrl>{QUrl(QString::fromLatin1(kWebAddress))});
}

}  // namespace
}  // namespace quarvelo::dialogs

#include "help_about_test.moc"
