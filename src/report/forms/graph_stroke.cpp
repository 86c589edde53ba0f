#include "report/forms/graph_stroke.h"

#include <QPaintDevice>
#include <QPainterPath>
#include <QRect>

#include <algorithm>
#include <cmath>

namespace tessaly::report {

namespace {

// The line through points [first, last], broken where a point is missing.
QPainterPath LinePath(const std::vector<std::optional<QPointF>>& points, size_t first, size_t last) {
  QPainterPath path;
  bool open = false;
  for (size_t i = first; i <= last && i < points.size(); ++i) {
    if (!points[i]) {
      open = false;
      continue;
    }
    if (open) path.lineTo(*points[i]);
    else path.moveTo(*points[i]);
    open = true;
  }
  return path;
}

}  // namespace

void StrokePolyline(QPainter& p, const std::vector<std::optional<QPointF>>& points, const QPen& pen,
                    int slice_width) {
  p.setPen(pen);
  p.setBrush(Qt::NoBrush);
  double left = 0, right = 0;
  bool any = false;
  for (const auto& pt : points) {
    if (!pt) continue;
    left = any ? std::min(left, pt->x()) : pt->x();
    right = any ? std::max(right, pt->x()) : pt->x();
    any = true;
  }
  if (!any) return;
  // Everything a point's joins and caps can touch lies within half the pen of it; a pixel
  // and a rounding more keep a slice's borrowed ends out of its columns.
  const double reach = pen.widthF() / 2 + 2;
  const int from = static_cast<int>(std::floor(left - reach));
  const int to = static_cast<int>(std::ceil(right + reach));
  const int slices = slice_width > 0 ? (to - from) / slice_width : 0;
  // A dash pattern runs on from the line's start and a miter can reach far from its point:
  // such lines, and a painter with a transform, are stroked whole.
  if (slices < 2 || !p.transform().isIdentity() || pen.style() != Qt::SolidLine ||
      pen.joinStyle() != Qt::RoundJoin) {
    p.drawPath(LinePath(points, 0, points.size() - 1));
    return;
  }
  const int height = p.device() ? p.device()->height() : 1 << 20;
  for (int k = 0; k < slices; ++k) {
    // Columns [x0, x1) in the painter's coordinates; the slices share their borders and
    // cover every column the line can touch.
    const int x0 = from + static_cast<int>(static_cast<long long>(to - from) * k / slices);
    const int x1 = from + static_cast<int>(static_cast<long long>(to - from) * (k + 1) / slices);
    // The last point far enough left of the slice and the first far enough right of it.
    size_t first = 0, last = points.size() - 1;
    for (size_t i = 0; i < points.size(); ++i) {
      if (!points[i]) continue;
      if (points[i]->x() <= x0 - reach) first = i;
      if (points[i]->x() >= x1 + reach) {
        last = i;
        break;
      }
    }
    p.save();
    p.setClipRect(QRect(x0, 0, x1 - x0, height), Qt::IntersectClip);
    p.drawPath(LinePath(points, first, last));
    p.restore();
  }
}

}  // namespace tessaly::report
