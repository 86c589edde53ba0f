#include "report/forms/series_chart.h"

#include <QCategoryAxis>
#include <QChart>
#include <QChartView>
#include <QTimer>
#include <QHBoxLayout>
#include <QLabel>
#include <QLegendMarker>
#include <QLineSeries>
#include <QMouseEvent>
#include <QPushButton>
#include <QValueAxis>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>

namespace tessaly::report {

namespace {

QLineSeries* MakeLine(const ChartLine& line, const QColor& color, Qt::PenStyle style, qreal width) {
  auto* series = new QLineSeries();
  series->setName(QString::fromStdString(line.legend));
  QPen pen(color);
  pen.setStyle(style);
  pen.setWidthF(width);
  series->setPen(pen);
  // A gap in the values is a gap in the line: the runs of drawable points are kept apart by
  // leaving the missing points out of a line that is drawn only where they are.
  for (size_t i = 0; i < line.values.size(); ++i)
    if (line.values[i]) series->append(static_cast<qreal>(i), *line.values[i]);
  return series;
}

void FadeMarker(QLegendMarker* marker, bool visible) {
  QColor color = marker->labelBrush().color();
  color.setAlphaF(visible ? 1.0 : 0.4);
  marker->setLabelBrush(color);
  QBrush brush = marker->brush();
  QColor fill = brush.color();
  fill.setAlphaF(visible ? 1.0 : 0.3);
  brush.setColor(fill);
  marker->setBrush(brush);
}

}  // namespace

SeriesChart::SeriesChart(QWidget* parent) : QWidget(parent) {
  setObjectName("chtSeries");
  chart_ = new QChart();
  chart_->legend()->setAlignment(Qt::AlignBottom);
  chart_->setMargins(QMargins(6, 6, 6, 6));
  view = new QChartView(chart_, this);
  view->setObjectName("chartView");
  view->setRenderHint(QPainter::Antialiasing);
  view->setRubberBand(QChartView::HorizontalRubberBand);
  view->viewport()->installEventFilter(this);
  lblValue = new QLabel(this);
  lblValue->setObjectName("lblValue");
  // The value line never widens the viewer: a long text is cut, not the window stretched.
  lblValue->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  cmdForecast = new QPushButton("Forecast", this);
  cmdForecast->setObjectName("cmdForecast");
  cmdForecast->setToolTip("The forecasts and enough history to judge them");
  cmdWhole = new QPushButton("Whole series", this);
  cmdWhole->setObjectName("cmdWhole");
  view->setMinimumSize(200, 150);
  auto* bar = new QHBoxLayout();
  bar->addWidget(cmdForecast);
  bar->addWidget(cmdWhole);
  bar->addWidget(lblValue, 1);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addLayout(bar);
  layout->addWidget(view, 1);
  connect(cmdForecast, &QPushButton::clicked, this, &SeriesChart::ShowForecastWindow);
  connect(cmdWhole, &QPushButton::clicked, this, &SeriesChart::ShowWholeSeries);
}

void SeriesChart::SetData(ChartData data, bool show_adjusted, bool show_fitted) {
  data_ = std::move(data);
  chart_->removeAllSeries();
  for (QAbstractAxis* axis : chart_->axes()) {
    chart_->removeAxis(axis);
    delete axis;
  }
  lines_.clear();
  chart_->setTitle(QString::fromStdString(data_.series));
  x_axis_ = new QCategoryAxis();
  x_axis_->setLabelsPosition(QCategoryAxis::AxisLabelsPositionOnValue);
  x_axis_->setTitleText("Period");
  y_axis_ = new QValueAxis();
  y_axis_->setLabelFormat("%.6g");  // 800, not 800.0; 0.25 as it is
  chart_->addAxis(x_axis_, Qt::AlignBottom);
  chart_->addAxis(y_axis_, Qt::AlignLeft);
  struct Style {
    const ChartLine* line;
    QColor color;
    Qt::PenStyle pen;
    qreal width;
  };
  const Style styles[] = {{&data_.actual, QColor(0x2b, 0x5d, 0x9b), Qt::SolidLine, 1.6},
                          {&data_.adjusted, QColor(0x3f, 0x9c, 0x5a), Qt::SolidLine, 1.2},
                          {&data_.forecast, QColor(0xc6, 0x28, 0x28), Qt::SolidLine, 2.2},
                          {&data_.lower, QColor(0x7b, 0x4f, 0xa8), Qt::DashLine, 1.2},
                          {&data_.upper, QColor(0x7b, 0x4f, 0xa8), Qt::DashLine, 1.2},
                          {&data_.fitted, QColor(0xe0, 0x8a, 0x1e), Qt::SolidLine, 1.4}};
  for (const Style& style : styles) {
    if (std::none_of(style.line->values.begin(), style.line->values.end(), [](const auto& v) { return v.has_value(); }))
      continue;
    QLineSeries* series = MakeLine(*style.line, style.color, style.pen, style.width);
    chart_->addSeries(series);
    series->attachAxis(x_axis_);
    series->attachAxis(y_axis_);
    connect(series, &QLineSeries::hovered, this, [this, series](const QPointF& point, bool state) {
      if (state) lblValue->setText(ValueText(series, static_cast<int>(std::lround(point.x()))));
    });
    lines_.push_back(series);
    if (style.line == &data_.adjusted && !show_adjusted) series->setVisible(false);
    if (style.line == &data_.fitted && !show_fitted) series->setVisible(false);
  }
  // A click on a legend entry hides or shows its line; the entry stays, faded.
  for (QLegendMarker* marker : chart_->legend()->markers()) {
    FadeMarker(marker, marker->series()->isVisible());
    marker->setVisible(true);
    connect(marker, &QLegendMarker::clicked, this, [this, marker] {
      QAbstractSeries* series = marker->series();
      series->setVisible(!series->isVisible());
      marker->setVisible(true);
      FadeMarker(marker, series->isVisible());
      FitValueAxis();
    });
  }
  // Until the pointer rests on a line, the line tells how to use the chart.
  lblValue->setText("Drag or wheel to zoom, right click to go back; a legend entry hides or shows its line.");
  ShowForecastWindow();
}

PointWindow SeriesChart::Window() const {
  if (!x_axis_) return {};
  return {static_cast<int>(std::ceil(x_axis_->min())), static_cast<int>(std::floor(x_axis_->max()))};
}

void SeriesChart::ShowWindow(int first, int last) {
  if (!x_axis_ || data_.periods.empty()) return;
  const int points = static_cast<int>(data_.periods.size());
  first = std::clamp(first, 0, points - 1);
  last = std::clamp(last, first, points - 1);
  updating_ = true;
  x_axis_->setRange(first, std::max(last, first + 1));
  updating_ = false;
  UpdateTicks();
  FitValueAxis();
}

void SeriesChart::ShowForecastWindow() {
  const PointWindow w = DefaultWindow(static_cast<int>(data_.periods.size()), data_.forecast_origin, data_.seasonality);
  ShowWindow(w.first, w.last);
}

void SeriesChart::ShowWholeSeries() { ShowWindow(0, static_cast<int>(data_.periods.size()) - 1); }

QString SeriesChart::ValueText(const QLineSeries* line, int point) const {
  if (point < 0 || point >= static_cast<int>(data_.labels.size())) return {};
  for (const QPointF& p : line->points())
    if (std::lround(p.x()) == point)
      return QString("%1  %2: %3")
          .arg(QString::fromStdString(data_.labels[static_cast<size_t>(point)]), line->name())
          .arg(p.y(), 0, 'f', 2);
  return {};
}

void SeriesChart::UpdateTicks() {
  const PointWindow w = Window();
  ticks_ = AxisTicks(data_.periods, data_.seasonality, w.first, w.last);
  // A category axis whose labels are replaced keeps drawing the old ones beside the new, so
  // each window gets an axis of its own.
  const qreal min = x_axis_->min(), max = x_axis_->max();
  auto* axis = new QCategoryAxis();
  axis->setLabelsPosition(QCategoryAxis::AxisLabelsPositionOnValue);
  axis->setTitleText("Period");
  axis->setStartValue(min - 1);
  for (const Tick& tick : ticks_) axis->append(QString::fromStdString(tick.label), tick.point);
  axis->setRange(min, max);
  updating_ = true;
  QCategoryAxis* old = x_axis_;
  chart_->addAxis(axis, Qt::AlignBottom);
  for (QLineSeries* line : lines_) {
    line->detachAxis(old);
    line->attachAxis(axis);
  }
  chart_->removeAxis(old);
  old->disconnect(this);
  old->deleteLater();
  x_axis_ = axis;
  x_axis_->setRange(min, max);
  updating_ = false;
  // A zoom of the chart view (the rubber band) changes the axis' range: the ticks follow
  // once the zoom is done.
  connect(x_axis_, &QValueAxis::rangeChanged, this, [this] {
    if (updating_) return;
    QTimer::singleShot(0, this, [this] {
      UpdateTicks();
      FitValueAxis();
    });
  });
}

// The value axis fits the visible lines over the window, with a little room.
void SeriesChart::FitValueAxis() {
  const PointWindow w = Window();
  double lo = 0, hi = 0;
  bool any = false;
  for (QLineSeries* line : lines_) {
    if (!line->isVisible()) continue;
    for (const QPointF& p : line->points()) {
      if (p.x() < w.first || p.x() > w.last) continue;
      lo = any ? std::min(lo, p.y()) : p.y();
      hi = any ? std::max(hi, p.y()) : p.y();
      any = true;
    }
  }
  if (!any) return;
  const double room = hi > lo ? (hi - lo) * 0.05 : std::max(1.0, std::fabs(hi) * 0.05);
  y_axis_->setRange(lo - room, hi + room);
  y_axis_->applyNiceNumbers();
}

bool SeriesChart::eventFilter(QObject* watched, QEvent* event) {
  if (watched == view->viewport() && x_axis_) {
    if (event->type() == QEvent::Wheel) {
      auto* wheel = static_cast<QWheelEvent*>(event);
      // Zoom about the period under the pointer.
      const QPointF at = chart_->mapToValue(wheel->position(), lines_.empty() ? nullptr : lines_.front());
      const PointWindow w = Window();
      const double factor = wheel->angleDelta().y() > 0 ? 0.8 : 1.25;
      const int first = static_cast<int>(std::lround(at.x() - (at.x() - w.first) * factor));
      const int last = static_cast<int>(std::lround(at.x() + (w.last - at.x()) * factor));
      ShowWindow(first, std::max(last, first + 4));
      return true;
    }
    if (event->type() == QEvent::MouseButtonRelease && static_cast<QMouseEvent*>(event)->button() == Qt::RightButton) {
      ShowForecastWindow();
      return true;
    }
  }
  return QWidget::eventFilter(watched, event);
}

}  // namespace tessaly::report
