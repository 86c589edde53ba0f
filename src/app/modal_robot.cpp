#include "app/modal_robot.h"

#include <QAbstractButton>
#include <QApplication>
#include <QTimer>
#include <QWidget>

namespace tessaly::app {

ModalRobot::ModalRobot(QObject* parent, std::function<bool(QWidget*)> script, int interval_ms)
    : QObject(parent), script_(std::move(script)) {
  timer_ = new QTimer(this);
  connect(timer_, &QTimer::timeout, this, [this] {
    QWidget* modal = QApplication::activeModalWidget();
    if (!modal || !modal->isVisible()) return;
    timer_->stop();
    if (script_(modal)) ++acted_;
    timer_->start();
  });
  timer_->start(interval_ms);
}

void ModalRobot::Stop() { timer_->stop(); }

bool ModalRobot::ClickLater(QWidget* window, const QString& name_or_text) {
  for (QAbstractButton* b : window->findChildren<QAbstractButton*>()) {
    QString text = b->text();
    text.remove('&');
    if ((b->objectName() == name_or_text || text == name_or_text) && b->isEnabled() && b->isVisible()) {
      QPointer<QAbstractButton> button(b);
      QTimer::singleShot(0, b, [button] {
        if (button) button->click();
      });
      return true;
    }
  }
  return false;
}

}  // namespace tessaly::app
