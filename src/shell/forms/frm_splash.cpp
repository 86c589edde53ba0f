#include "shell/forms/frm_splash.h"

#include <QGuiApplication>
#include <QLinearGradient>
#include <QPainter>
#include <QScreen>
#include <QTimer>

#include "shell/app_info.h"

namespace tessaly::shell {

frmQuorvaneSplash::frmQuorvaneSplash(int close_after_ms)
    : QWidget(nullptr, Qt::SplashScreen | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint) {
  setObjectName("frmQuorvaneSplash");
  setFixedSize(520, 280);
  if (QScreen* screen = QGuiApplication::primaryScreen())
    move(screen->availableGeometry().center() - rect().center());
  QTimer::singleShot(close_after_ms, this, &QWidget::close);
}

void frmQuorvaneSplash::paintEvent(QPaintEvent*) {
  QPainter p(this);
  p.setRenderHint(QPainter::Antialiasing);
  QLinearGradient bg(0, 0, 0, height());
  bg.setColorAt(0, QColor(0x2b, 0x4a, 0x6f));
  bg.setColorAt(1, QColor(0x16, 0x28, 0x3d));
  p.fillRect(rect(), bg);

  // A small rising series as the product's mark.
  p.setPen(QPen(QColor(0x8f, 0xc1, 0xe8), 3));
  const QPointF pts[] = {{40, 244}, {80, 226}, {120, 234}, {160, 200}, {200, 210}, {240, 176},
                         {280, 186}, {320, 152}};
  p.drawPolyline(pts, 8);
  p.setPen(QPen(QColor(0xf2, 0xb1, 0x4c), 3, Qt::DashLine));
  const QPointF fore[] = {{320, 152}, {360, 140}, {400, 124}};
  p.drawPolyline(fore, 3);

  p.setPen(Qt::white);
  QFont title = font();
  title.setPointSizeF(title.pointSizeF() * 3);
  title.setBold(true);
  p.setFont(title);
  p.drawText(QRect(0, 24, width() - 32, 60), Qt::AlignRight | Qt::AlignVCenter, kProductName);
  QFont small = font();
  p.setFont(small);
  p.setPen(QColor(0xd8, 0xe4, 0xf0));
  p.drawText(QRect(0, 84, width() - 32, 24), Qt::AlignRight | Qt::AlignVCenter,
             "Batch forecasting for many time series");
  p.drawText(QRect(0, height() - 36, width() - 32, 24), Qt::AlignRight | Qt::AlignVCenter,
             QString("Version %1").arg(kVersion));
}

void frmQuorvaneSplash::mousePressEvent(QMouseEvent*) { close(); }

}  // namespace tessaly::shell
