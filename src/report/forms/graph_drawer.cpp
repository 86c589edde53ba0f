#include "report/forms/graph_drawer.h"

#include "report/forms/graph_stroke.h"
#include "report/forms/jpeg_writer.h"

#include <QCoreApplication>
#include <QFile>
#include <QFont>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QImage>
#include <QLocale>
#include <QPainter>
#include <QPainterPath>
#include <QString>

#include <algorithm>
#include <cmath>
#include <system_error>

namespace tessaly::report {

namespace {

// Text painting needs a GUI application; a run from the command line has none, so one is
// made on the off-screen platform and kept for the life of the process. A process that
// made a non-GUI application can't have one: no pictures then, rather than an abort.
bool EnsureGuiApplication() {
  if (QCoreApplication::instance())
    return qobject_cast<QGuiApplication*>(QCoreApplication::instance()) != nullptr;
  static int argc = 3;
  static char arg0[] = "tessaly";
  static char arg1[] = "-platform";
  static char arg2[] = "offscreen";
  static char* argv[] = {arg0, arg1, arg2, nullptr};
  // The toolkit's notes about the desktop session it does not find (no runtime folder, no
  // display) are no business of a run's output; its other warnings still show.
  static QtMessageHandler previous = qInstallMessageHandler(
      [](QtMsgType type, const QMessageLogContext& context, const QString& text) {
        if (type == QtWarningMsg && text.contains(QLatin1String("XDG_RUNTIME_DIR"))) return;
        if (previous) previous(type, context, text);
      });
  static QGuiApplication* app = new QGuiApplication(argc, argv);
  return app != nullptr;
}

struct LineStyle {
  QColor colour;
  Qt::PenStyle pen;
  double width;
};

LineStyle StyleFor(LineRole role) {
  switch (role) {
    case LineRole::Actual: return {QColor(0x1f, 0x5f, 0xa8), Qt::SolidLine, 2.0};
    case LineRole::Fitted: return {QColor(0xe0, 0x7a, 0x10), Qt::SolidLine, 2.0};
    case LineRole::Forecast: return {QColor(0xc6, 0x28, 0x28), Qt::SolidLine, 2.4};
    case LineRole::Lower: return {QColor(0x2e, 0x8b, 0x57), Qt::DashLine, 1.6};
    case LineRole::Upper: return {QColor(0x8e, 0x44, 0xad), Qt::DashLine, 1.6};
    case LineRole::Cleansed: return {QColor(0x13, 0xa8, 0x8c), Qt::SolidLine, 3.6};
    case LineRole::Residual: return {QColor(0x7a, 0x3b, 0x9e), Qt::SolidLine, 1.8};
  }
  return {Qt::black, Qt::SolidLine, 1.5};
}

const QColor kInk(0x1d, 0x27, 0x33);
const QColor kMuted(0x4b, 0x57, 0x63);
const QColor kGrid(0xe2, 0xe6, 0xeb);
const QColor kFrame(0xb9, 0xc2, 0xcc);

QFont MakeFont(int pixels, bool bold = false) {
  QFont font(QStringLiteral("DejaVu Sans"));
  font.setStyleHint(QFont::SansSerif);
  font.setPixelSize(pixels);
  font.setBold(bold);
  return font;
}

// Round axis bounds and a step of 1, 2, 2.5 or 5 times a power of ten, about six steps.
struct Axis {
  double low, high, step;
};

Axis NiceAxis(double low, double high) {
  if (high < low) std::swap(low, high);
  if (high - low < 1e-12 * std::max(1.0, std::fabs(high))) {
    const double pad = low == 0 ? 1.0 : std::fabs(low) * 0.1;
    low -= pad;
    high += pad;
  }
  const double raw = (high - low) / 6.0;
  const double magnitude = std::pow(10.0, std::floor(std::log10(raw)));
  double step = magnitude * 10;
  for (double m : {1.0, 2.0, 2.5, 5.0, 10.0}) {
    if (magnitude * m >= raw) {
      step = magnitude * m;
      break;
    }
  }
  return {std::floor(low / step) * step, std::ceil(high / step) * step, step};
}

QString AxisNumber(double value, double step) {
  int decimals = 0;
  if (step < 1) decimals = std::min(10, static_cast<int>(std::ceil(-std::log10(step) - 1e-9)));
  if (std::fmod(step * std::pow(10.0, decimals), 1.0) > 1e-6) ++decimals;  // steps like 2.5
  if (std::fabs(value) < step * 1e-9) value = 0;
  QLocale english(QLocale::English, QLocale::UnitedStates);
  return english.toString(value, 'f', decimals);
}

QString Trimmed(const std::string& text) { return QString::fromStdString(text).trimmed(); }

// Horizontal grid and the value labels at the left of one panel.
void PaintValueAxis(QPainter& p, const QRectF& panel, const Axis& axis, const QFont& font,
                    const QColor& label_colour) {
  p.setFont(font);
  for (double v = axis.low; v <= axis.high + axis.step * 0.5; v += axis.step) {
    const double py = panel.bottom() - (v - axis.low) / (axis.high - axis.low) * panel.height();
    p.setPen(QPen(kGrid, 1));
    p.drawLine(QPointF(panel.left(), py), QPointF(panel.right(), py));
    p.setPen(label_colour);
    p.drawText(QRectF(0, py - 9, panel.left() - 8, 18), Qt::AlignRight | Qt::AlignVCenter,
               AxisNumber(v, axis.step));
  }
}

double LabelWidth(const Axis& axis, const QFontMetricsF& metrics) {
  double width = 0;
  for (double v = axis.low; v <= axis.high + axis.step * 0.5; v += axis.step)
    width = std::max(width, metrics.horizontalAdvance(AxisNumber(v, axis.step)));
  return width;
}

// Kept whole: one picture painted from top to bottom; the panels, scales and fonts laid out
// at its top are used by every part after them, each part marked below.
void Paint(QPainter& p, const GraphPlan& plan, int width, int height) {
  p.setRenderHint(QPainter::Antialiasing, true);
  p.setRenderHint(QPainter::TextAntialiasing, true);
  p.fillRect(QRectF(0, 0, width, height), Qt::white);

  const QFont title_font = MakeFont(17, true);
  const QFont tick_font = MakeFont(12);
  const QFont axis_font = MakeFont(13);
  const QFont legend_font = MakeFont(13);
  const QFontMetricsF tick_metrics(tick_font);

  // Title.
  p.setFont(title_font);
  p.setPen(kInk);
  const QRectF title_box(20, 10, width - 40, 34);
  p.drawText(title_box, Qt::AlignCenter | Qt::TextSingleLine,
             QFontMetricsF(title_font).elidedText(QString::fromStdString(plan.title),
                                                   Qt::ElideRight, title_box.width()));

  // A line with a scale of its own gets a panel of its own under the main one, sharing
  // the periods: residuals beside actuals stay readable and never cross them.
  const bool twin = plan.secondary_line >= 0 && plan.secondary_line < int(plan.lines.size());
  const Axis y = NiceAxis(plan.y_min, plan.y_max);
  const Axis y2 = NiceAxis(twin ? plan.y2_min : 0, twin ? plan.y2_max : 1);
  const double label_width =
      std::max(LabelWidth(y, tick_metrics), twin ? LabelWidth(y2, tick_metrics) : 0.0);

  const double legend_height = 36;
  const double left = std::max(60.0, label_width + 26);
  const double right = width - 28;
  const double top = 56;
  const double bottom = height - legend_height - 58;
  QRectF area(left, top, right - left, bottom - top);
  QRectF sub;
  if (twin) {
    const double gap = 24;
    const double main_height = (area.height() - gap) * 0.62;
    sub = QRectF(left, top + main_height + gap, area.width(), area.height() - main_height - gap);
    area.setHeight(main_height);
  }
  const QRectF base = twin ? sub : area;  // the panel the period labels hang under
  const int n = static_cast<int>(plan.labels.size());

  auto x_of = [&](double i) {
    if (n <= 1) return area.center().x();
    const double pad = area.width() * 0.01;
    return area.left() + pad + (area.width() - 2 * pad) * i / (n - 1);
  };
  auto y_of = [&](double v) {
    return area.bottom() - (v - y.low) / (y.high - y.low) * area.height();
  };
  auto y2_of = [&](double v) {
    return sub.bottom() - (v - y2.low) / (y2.high - y2.low) * sub.height();
  };

  // Panels, the forecast region shaded, grid and axis labels.
  std::vector<QRectF> panels = {area};
  if (twin) panels.push_back(sub);
  for (const QRectF& panel : panels) p.fillRect(panel, QColor(0xfb, 0xfc, 0xfe));
  const bool has_origin = plan.forecast_origin > 0 && plan.forecast_origin < n;
  const double origin_x =
      has_origin ? (x_of(plan.forecast_origin - 1) + x_of(plan.forecast_origin)) / 2 : 0;
  if (has_origin)
    p.fillRect(QRectF(QPointF(origin_x, area.top()), area.bottomRight()), QColor(0xf1, 0xf4, 0xf8));
  PaintValueAxis(p, area, y, tick_font, kMuted);
  if (twin)
    PaintValueAxis(p, sub, y2, tick_font, StyleFor(plan.lines[plan.secondary_line].role).colour);
  p.setFont(tick_font);
  // Every label_step-th period is marked; on a narrow picture with long labels only every
  // so many marks carry their text, so that no two labels overlap.
  double widest = 0;
  for (int i = 0; i < n; i += plan.label_step)
    widest = std::max(widest, tick_metrics.horizontalAdvance(QString::fromStdString(plan.labels[i])));
  const double mark_gap = n > 1 ? (x_of(plan.label_step) - x_of(0)) : area.width();
  const int text_every = std::max(1, static_cast<int>(std::ceil((widest + 3) / std::max(mark_gap, 1.0) - 0.02)));
  for (int i = 0, mark = 0; i < n; i += plan.label_step, ++mark) {
    const double px = x_of(i);
    p.setPen(QPen(QColor(0xee, 0xf1, 0xf4), 1));
    for (const QRectF& panel : panels)
      p.drawLine(QPointF(px, panel.top()), QPointF(px, panel.bottom()));
    p.setPen(QPen(kFrame, 1));
    p.drawLine(QPointF(px, base.bottom()), QPointF(px, base.bottom() + 5));
    if (mark % text_every != 0) continue;
    const QString label = QString::fromStdString(plan.labels[i]);
    const double w = tick_metrics.horizontalAdvance(label) + 4;
    p.setPen(kMuted);
    p.drawText(QRectF(px - w / 2, base.bottom() + 7, w, 18), Qt::AlignCenter, label);
  }
  p.setPen(QPen(QColor(0x8a, 0x94, 0x9e), 1.2));
  if (plan.zero_line && y.low < 0 && y.high > 0)
    p.drawLine(QPointF(area.left(), y_of(0)), QPointF(area.right(), y_of(0)));
  if (twin && y2.low < 0 && y2.high > 0)
    p.drawLine(QPointF(sub.left(), y2_of(0)), QPointF(sub.right(), y2_of(0)));
  if (has_origin) {
    p.setPen(QPen(QColor(0x8a, 0x94, 0x9e), 1.2, Qt::DashLine));
    p.drawLine(QPointF(origin_x, area.top()), QPointF(origin_x, area.bottom()));
  }

  // The band between the limits, under the lines.
  const GraphLine* lower = nullptr;
  const GraphLine* upper = nullptr;
  for (const auto& line : plan.lines) {
    if (line.role == LineRole::Lower) lower = &line;
    if (line.role == LineRole::Upper) upper = &line;
  }
  if (lower && upper) {
    std::vector<QPointF> high, low;
    for (int i = 0; i < n; ++i) {
      if (lower->values[i] && upper->values[i]) {
        high.emplace_back(x_of(i), y_of(*upper->values[i]));
        low.emplace_back(x_of(i), y_of(*lower->values[i]));
      }
    }
    if (high.size() >= 2) {
      QPainterPath band;
      band.moveTo(high.front());
      for (size_t k = 1; k < high.size(); ++k) band.lineTo(high[k]);
      for (size_t k = low.size(); k-- > 0;) band.lineTo(low[k]);
      band.closeSubpath();
      p.fillPath(band, QColor(0xc6, 0x28, 0x28, 26));
    }
  }

  // The data lines; a point with no neighbour is shown as a dot, short series get markers.
  // A cleansed series mostly equals the actuals: drawn first and wider, it shows as a
  // halo where they agree and on its own where a value was cleansed.
  const bool markers = n <= 40;
  std::vector<int> order;
  for (int k = 0; k < int(plan.lines.size()); ++k)
    if (plan.lines[k].role == LineRole::Cleansed) order.push_back(k);
  for (int k = 0; k < int(plan.lines.size()); ++k)
    if (plan.lines[k].role != LineRole::Cleansed) order.push_back(k);
  for (int k : order) {
    const GraphLine& line = plan.lines[k];
    const bool on_sub = twin && k == plan.secondary_line;
    const auto y_line = [&](double v) { return on_sub ? y2_of(v) : y_of(v); };
    p.save();
    p.setClipRect((on_sub ? sub : area).adjusted(-3, -3, 3, 3));
    LineStyle style = StyleFor(line.role);
    if (line.role == LineRole::Cleansed) style.colour.setAlpha(150);
    std::vector<std::optional<QPointF>> points(n);
    for (int i = 0; i < n; ++i)
      if (line.values[i]) points[i] = QPointF(x_of(i), y_line(*line.values[i]));
    StrokePolyline(p, points, QPen(style.colour, style.width, style.pen, Qt::RoundCap, Qt::RoundJoin));
    p.setPen(QPen(style.colour, 1));
    p.setBrush(style.colour);
    for (int i = 0; i < n; ++i) {
      if (!line.values[i]) continue;
      const bool alone = (i == 0 || !line.values[i - 1]) && (i + 1 >= n || !line.values[i + 1]);
      if (alone || (markers && style.pen == Qt::SolidLine))
        p.drawEllipse(QPointF(x_of(i), y_line(*line.values[i])), 2.8, 2.8);
    }
    p.restore();
  }

  p.setBrush(Qt::NoBrush);
  p.setPen(QPen(kFrame, 1));
  for (const QRectF& panel : panels) p.drawRect(panel);

  // Axis title.
  p.setFont(axis_font);
  p.setPen(kInk);
  p.drawText(QRectF(base.left(), base.bottom() + 28, base.width(), 20), Qt::AlignCenter,
             QString::fromStdString(plan.x_title));

  // Legend strip at the foot, entries centred in one row.
  p.setFont(legend_font);
  const QFontMetricsF legend_metrics(legend_font);
  const double sample = 30, gap = 8, spacing = 26;
  double total = 0;
  for (const auto& line : plan.lines)
    total += sample + gap + legend_metrics.horizontalAdvance(Trimmed(line.legend)) + spacing;
  total -= spacing;
  const QRectF box((width - total) / 2 - 14, height - legend_height - 10, total + 28, legend_height);
  p.setPen(QPen(QColor(0xd5, 0xdb, 0xe1), 1));
  p.setBrush(QColor(0xf8, 0xf9, 0xfb));
  p.drawRoundedRect(box, 6, 6);
  double x = box.left() + 14;
  const double cy = box.center().y();
  for (const auto& line : plan.lines) {
    const LineStyle style = StyleFor(line.role);
    p.setPen(QPen(style.colour, std::min(style.width + 0.6, 3.0), style.pen, Qt::FlatCap));
    p.drawLine(QPointF(x, cy), QPointF(x + sample, cy));
    x += sample + gap;
    const QString text = Trimmed(line.legend);
    p.setPen(kInk);
    p.drawText(QRectF(x, cy - 10, legend_metrics.horizontalAdvance(text) + 2, 20),
               Qt::AlignLeft | Qt::AlignVCenter, text);
    x += legend_metrics.horizontalAdvance(text) + spacing;
  }
}

}  // namespace

bool GraphFlags::Any() const {
  return std::any_of(drawn.begin(), drawn.end(), [](bool b) { return b; });
}

GraphSize GraphSizeForPane(int pane_width, int pane_height) {
  if (pane_width <= 0 || pane_height <= 0) return GraphSize{};
  return {std::max(480, static_cast<int>(pane_width * 0.83)),
          std::max(300, static_cast<int>(pane_height * 0.88))};
}

bool DrawGraphFile(const GraphPlan& plan, const std::filesystem::path& file, GraphSize size) {
  if (plan.labels.empty() || size.width < 200 || size.height < 150) return false;
  for (const auto& line : plan.lines)
    if (line.values.size() != plan.labels.size()) return false;
  if (!EnsureGuiApplication()) return false;
  // One canvas serves every picture of that size: a fresh 2 MB image per picture costs
  // more in page faults than the painting itself. One per thread, as two runs in one program
  // may draw at once.
  static thread_local QImage image;
  if (image.width() != size.width || image.height() != size.height)
    image = QImage(size.width, size.height, QImage::Format_RGB32);
  if (image.isNull()) return false;
  {
    QPainter painter(&image);
    if (!painter.isActive()) return false;
    Paint(painter, plan, size.width, size.height);
  }
  return WriteJpeg(image, file, 92);
}

GraphFlags DrawSeriesGraphs(const GraphInput& input, const GraphPreferences& prefs,
                            const std::filesystem::path& output_folder, GraphSize size,
                            const std::function<void()>& after_each) {
  GraphFlags flags;
  if (prefs.no_graphs) return flags;
  for (GraphKind kind : kDrawingOrder) {
    if (!WantsGraph(prefs, kind)) continue;
    const std::optional<GraphPlan> plan = PlanGraph(input, kind, prefs.no_limits);
    if (!plan) continue;
    flags.drawn[static_cast<int>(kind) - 1] =
        DrawGraphFile(*plan, output_folder / plan->file_name, size);
    if (after_each) after_each();
  }
  return flags;
}

}  // namespace tessaly::report
