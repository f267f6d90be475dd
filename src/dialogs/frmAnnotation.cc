#include "dialogs/frmAnnotation.h"

#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>
#include <string>

#include "dialogs/dialog_widgets.h"

namespace quarvelo::dialogs {

frmAnnotation::frmAnnotation(const DialogServices& services, QWidget* parent)
    : QDialog(parent), services_(services), scope_(services.Scope) {
  setObjectName(QStringLiteral("frmAnnotation"));
  setWindowTitle(QStringLiteral("Annotation"));
  setModal(true);
  BuildControls();
  Load();
}

void frmAnnotation::BuildControls() {
  auto* layout = new QVBoxLayout(this);
  auto* frame = Named(new QGroupBox(QStringLiteral("Annotation")), "fraAnnotation", QString(),
                      QStringLiteral("Annotation"));
  auto* grid = new QGridLayout(frame);
  auto* caption =
      Named(new QLabel(QStringLiteral("Text")), "lblAnnotation", QString(), QStringLiteral("Text"));
  txt_label_ = Named(new QLineEdit, "txtLabel", QStringLiteral("Annotation text"));
  caption->setBuddy(txt_label_);
  grid->addWidget(caption, 0, 0);
  grid->addWidget(txt_label_, 0, 1, 1, 3);

  cbo_color_ = Named(new QComboBox, "cboColor", QStringLiteral("Annotation colour"));
  cbo_color_->addItems(
      {"CH1", "CH2", "CH3", "CH4", "DIG", "MATH", "REF", "MARKer", "WHITe", "RED"});
  cbo_background_ = Named(new QComboBox, "cboBackGround", QStringLiteral("Annotation background"));
  cbo_background_->addItems({"OPAQue", "INVerted", "TRANsparent"});
  auto* colour_label = new QLabel(QStringLiteral("Colour"));
  colour_label->setBuddy(cbo_color_);
  auto* background_label = new QLabel(QStringLiteral("Background"));
  background_label->setBuddy(cbo_background_);
  grid->addWidget(colour_label, 1, 0);
  grid->addWidget(cbo_color_, 1, 1);
  grid->addWidget(background_label, 1, 2);
  grid->addWidget(cbo_background_, 1, 3);
  connect(cbo_color_, &QComboBox::currentIndexChanged, this, [this](int i) { cboColor_Click(i); });
  connect(cbo_background_, &QComboBox::currentIndexChanged, this,
          [this](int i) { cboBackGround_Click(i); });

  ssr_on_ = Named(new QToolButton, "ssrON", QStringLiteral("Annotation On/Off"));
  ssr_on_->setText(QStringLiteral("ON"));
  ssr_on_->setCheckable(true);
  ssr_on_->setToolButtonStyle(Qt::ToolButtonTextOnly);
  connect(ssr_on_, &QToolButton::toggled, this, [this](bool on) { ssrON_Click(on); });
  grid->addWidget(ssr_on_, 2, 0);
  layout->addWidget(frame);

  auto* buttons = new QHBoxLayout;
  auto add = [&](const char* name, const QString& caption_text) {
    auto* b = Named(new QPushButton(caption_text), name, QString(),
                    QString(caption_text).remove(QLatin1Char('&')));
    buttons->addWidget(b);
    return b;
  };
  QPushButton* set = add("cmdSet", QStringLiteral("Set"));
  QPushButton* ok = add("cmdOk", QStringLiteral("OK"));
  ok->setDefault(true);
  QPushButton* clear = add("cmdClear", QStringLiteral("Clear"));
  QPushButton* cancel = add("cmdCancel", QStringLiteral("&Cancel"));
  connect(set, &QPushButton::clicked, this, [this] { cmdSet_Click(); });
  connect(ok, &QPushButton::clicked, this, [this] { cmdOk_Click(); });
  connect(clear, &QPushButton::clicked, this, [this] {
    txt_label_->clear();
    txt_label_->setFocus();
  });
  connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
  layout->addLayout(buttons);
}

void frmAnnotation::Load() {
  RefreshingGuard guard(Refreshing);
  services_.Readback.ReadBackAnnotation(true);
  txt_label_->setText(QString::fromStdString(scope_.AnnotationText));
  SelectMnemonic(cbo_background_, scope_.AnnotationBackground);
  SelectMnemonic(cbo_color_, scope_.AnnotationColor);
  ssr_on_->setChecked(scope_.AnnotationOn);
  txt_label_->selectAll();
}

void frmAnnotation::cboColor_Click(int item) {
  if (Refreshing || item < 0) return;
  const std::string text = cbo_color_->itemText(item).toStdString();
  services_.Link.SendCommand(":DISPlay:ANNotation:COLor " + text);
  scope_.AnnotationColor = text;
}

void frmAnnotation::cboBackGround_Click(int item) {
  if (Refreshing || item < 0) return;
  const std::string text = cbo_background_->itemText(item).toStdString();
  services_.Link.SendCommand(":DISPlay:ANNotation:BACKground " + text);
  scope_.AnnotationBackground = text;
}

void frmAnnotation::ssrON_Click(bool on) {
  if (Refreshing) return;
  if (on) cmdSet_Click();
  services_.Link.SendCommand(on ? ":DISPlay:ANNotation 1" : ":DISPlay:ANNotation 0");
  scope_.AnnotationOn = on;
}

void frmAnnotation::cmdSet_Click() {
  const std::string text = TrimmedText(txt_label_->text());
  services_.Link.SendCommand(":DISPlay:ANNotation:TEXT " + Quoted(text));
  scope_.AnnotationText = text;
}

void frmAnnotation::cmdOk_Click() {
  cmdSet_Click();
  SweepIfRunning(services_);
  accept();
}

}  // namespace quarvelo::dialogs
