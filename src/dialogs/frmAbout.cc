#include "dialogs/frmAbout.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "dialogs/dialog_widgets.h"
#include "dialogs/help.h"

namespace quarvelo::dialogs {
namespace {

constexpr char kDescription[] =
    "Remote control and spectrum analysis for Keysight InfiniiVision X-series oscilloscopes: "
    "captures the channels' waveforms over the instrument's link, computes their spectra on "
    "this computer (FFT and DFT, seven windows, averaging, dBV, dBm or V RMS) and drives the "
    "oscilloscope's channels, trigger, time base, math, waveform generator and voltmeter.";

constexpr char kVisaText[] =
    "No vendor VISA library required: QUARVELO brings its own VISA layer, with raw socket, "
    "VXI-11, HiSLIP and USB-TMC transports.";

constexpr char kNotice[] =
    "QUARVELO is not a product of the oscilloscope's maker. Keysight and InfiniiVision are "
    "trademarks of their owner. Check important measurements on the instrument itself.";

QLabel* Text(const char* name, const QString& text) {
  auto* label = Named(new QLabel(text), name, QString(), text);
  label->setWordWrap(true);
  return label;
}

}  // namespace

std::string VersionText() {
  return "QUARVELO V" + std::to_string(QUARVELO_VERSION_MAJOR) + "." +
         std::to_string(QUARVELO_VERSION_MINOR) + "." + std::to_string(QUARVELO_VERSION_PATCH);
}

frmAbout::frmAbout(ui::UiServices& ui, QWidget* parent) : QDialog(parent), ui_(ui) {
  setObjectName(QStringLiteral("frmAbout"));
  setWindowTitle(QStringLiteral("About QUARVELO"));
  setModal(true);
  auto* layout = new QVBoxLayout(this);
  QLabel* version = Text("lblVersion", QString::fromStdString(VersionText()));
  QFont font = version->font();
  font.setPointSize(font.pointSize() + 4);
  font.setBold(true);
  version->setFont(font);
  layout->addWidget(version);
  layout->addWidget(Text("lblDescription", QString::fromLatin1(kDescription)));
  layout->addWidget(Text("lblVisa", QString::fromLatin1(kVisaText)));
  layout->addWidget(Text("lblNotice", QString::fromLatin1(kNotice)));

  const QString address = QString::fromLatin1(kWebAddress);
  auto* link = Named(new QLabel(QStringLiteral("<a href=\"%1\">%1</a>").arg(address)), "lblLink",
                     QStringLiteral("Open the instrument maker's web site"), address);
  link->setTextInteractionFlags(Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
  connect(link, &QLabel::linkActivated, this,
          [this](const QString& target) { OpenDocumentChecked(target.toStdString(), ui_); });
  layout->addWidget(link);

  auto* buttons = new QDialogButtonBox;
  auto* ok = Named(new QPushButton(QStringLiteral("OK")), "cmdOk", QString(), "OK");
  ok->setDefault(true);
  buttons->addButton(ok, QDialogButtonBox::AcceptRole);
  connect(ok, &QPushButton::clicked, this, &QDialog::accept);
  layout->addWidget(buttons);
  setMinimumWidth(420);
}

}  // namespace quarvelo::dialogs
