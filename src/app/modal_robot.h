#pragma once
// Answers the modal windows of a scripted desktop session: the screenshot run and the GUI
// tests. Every few milliseconds it looks at the active modal window and hands it to the
// script; the script acts through queued calls so that a window it opens does not stop
// the robot.
#include <QObject>
#include <QPointer>
#include <functional>

class QTimer;
class QWidget;

namespace tessaly::app {

class ModalRobot : public QObject {
  Q_OBJECT
 public:
  // `script` gets the active modal window; it returns true when it acted on it.
  ModalRobot(QObject* parent, std::function<bool(QWidget* modal)> script, int interval_ms = 40);
  void Stop();
  int Acted() const { return acted_; }

  // Helpers for scripts: a queued click on a button of the window by object name or text.
  static bool ClickLater(QWidget* window, const QString& name_or_text);

 private:
  QTimer* timer_ = nullptr;
  std::function<bool(QWidget*)> script_;
  int acted_ = 0;
};

}  // namespace tessaly::app
