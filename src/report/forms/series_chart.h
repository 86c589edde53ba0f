#pragma once
// The interactive graph of a dataset in the desktop's viewer (Qt Charts): the actuals, the
// series adjusted for interventions, the fitted values, the forecasts and their limits. Drag to zoom into a span
// of periods, the wheel zooms about the pointer, a right click or "Forecast" goes back to
// the first window, "Whole series" shows everything; the pointer near a line tells its value;
// a click on a legend entry hides or shows that line. The axis ticks follow the window.
#include <QWidget>
#include <vector>

#include "report/chart_data.h"

class QLabel;
class QPushButton;

class QChart;
class QChartView;
class QCategoryAxis;
class QValueAxis;
class QLineSeries;

namespace tessaly::report {

class SeriesChart : public QWidget {
  Q_OBJECT
 public:
  explicit SeriesChart(QWidget* parent = nullptr);
  // Shows the data; `show_adjusted` and `show_fitted` start with those lines visible (the
  // others of theirs wait, hidden, in the legend).
  void SetData(ChartData data, bool show_adjusted, bool show_fitted = false);
  // The window of points shown (inclusive), as the axis holds it.
  PointWindow Window() const;
  void ShowWindow(int first, int last);
  void ShowForecastWindow();
  void ShowWholeSeries();
  // The ticks now on the time axis.
  const std::vector<Tick>& Ticks() const { return ticks_; }
  // The lines, by legend; hidden ones are toggled off in the legend.
  std::vector<QLineSeries*> Lines() const { return lines_; }
  // The text the pointer shows near a point of a line.
  QString ValueText(const QLineSeries* line, int point) const;

  QChartView* view = nullptr;
  QLabel* lblValue = nullptr;
  QPushButton* cmdForecast = nullptr;
  QPushButton* cmdWhole = nullptr;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void UpdateTicks();
  void FitValueAxis();
  ChartData data_;
  QChart* chart_ = nullptr;
  QCategoryAxis* x_axis_ = nullptr;
  QValueAxis* y_axis_ = nullptr;
  std::vector<QLineSeries*> lines_;
  std::vector<Tick> ticks_;
  bool updating_ = false;
};

}  // namespace tessaly::report
