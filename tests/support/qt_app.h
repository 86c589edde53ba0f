#pragma once
// The one QApplication of a test program, drawing off-screen. Never destroyed: an application
// torn down among the static destructors at exit crashes.
#include <QApplication>

namespace tessaly::testing {

inline QApplication& OffscreenApp() {
  if (auto* app = qobject_cast<QApplication*>(QCoreApplication::instance())) return *app;
  qputenv("QT_QPA_PLATFORM", "offscreen");
  static int argc = 1;
  static char name[] = "tessaly_tests";
  static char* argv[] = {name, nullptr};
  return *new QApplication(argc, argv);
}

}  // namespace tessaly::testing
