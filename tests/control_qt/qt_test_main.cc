// Widget tests need one QApplication for the whole run; they run without a display.
#include <gtest/gtest.h>

#include <QApplication>
#include <QtGlobal>

int main(int argc, char** argv) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(argc, argv);
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
