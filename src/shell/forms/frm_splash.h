#pragma once
// frmQuorvaneSplash: the start-up picture. It closes itself after a few seconds or when
// clicked; nothing else depends on it.
#include <QWidget>

namespace tessaly::shell {

class frmQuorvaneSplash : public QWidget {
  Q_OBJECT
 public:
  explicit frmQuorvaneSplash(int close_after_ms = 3000);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
};

}  // namespace tessaly::shell
