#include "report/forms/graph_drawer.h"
#include "report/forms/graph_stroke.h"
#include "report/forms/jpeg_writer.h"

#include <gtest/gtest.h>

#include <QColor>
#include <QImage>
#include <QPainter>
#include <QString>
#include <cmath>

#include "airline.h"
#include "support/program_folder.h"

namespace tessaly::report {
namespace {

using tessaly::testing::AirlineInput;
using tessaly::testing::ReadFile;
using tessaly::testing::TempDir;

QImage Load(const std::filesystem::path& file) {
  return QImage(QString::fromStdString(file.string()), "JPG");
}

// Pixels where one channel clearly leads: how the drawer's green lower limit and red
// forecast show in a picture, whatever the smoothing of the JPEG.
template <typename Leads>
int Count(const QImage& image, Leads leads) {
  int count = 0;
  for (int y = 0; y < image.height(); ++y)
    for (int x = 0; x < image.width(); ++x) count += leads(image.pixelColor(x, y));
  return count;
}
bool Green(const QColor& c) { return c.green() - c.red() > 40 && c.green() - c.blue() > 15; }
bool Red(const QColor& c) { return c.red() - c.green() > 80 && c.red() - c.blue() > 80; }

TEST(GraphDrawer, AirlineSeriesGivesNinePictures) {
  TempDir out;
  const GraphFlags flags = DrawSeriesGraphs(AirlineInput(), GraphPreferences{}, out.path());
  for (const auto& g : AllGraphs()) {
    EXPECT_TRUE(flags.Drawn(g.kind)) << g.file_suffix;
    const QImage image = Load(out / (std::string("AIRLINE") + g.file_suffix));
    ASSERT_FALSE(image.isNull()) << g.file_suffix;
    EXPECT_EQ(image.width(), 1000);
    EXPECT_EQ(image.height(), 600);
  }
  EXPECT_TRUE(flags.Any());
  // The size follows the report pane when one is given, within bounds.
  EXPECT_EQ(GraphSizeForPane(1200, 800).width, 996);
  EXPECT_EQ(GraphSizeForPane(1200, 800).height, 704);
  EXPECT_EQ(GraphSizeForPane(100, 100).width, 480);
  const GraphFlags small = DrawSeriesGraphs(AirlineInput(), GraphPreferences{}, out.path(), {640, 400});
  EXPECT_EQ(Load(out / "AIRLINEres.jpg").size(), QSize(640, 400));
  EXPECT_TRUE(small.Drawn(GraphKind::Res));
  // The pictures' own JPEG writer makes the very bytes the toolkit's makes of the same pixels.
  for (const char* picture : {"AIRLINEfore.jpg", "AIRLINEactres.jpg", "AIRLINEactcleanse.jpg"}) {
    const QImage pixels = Load(out / picture).convertToFormat(QImage::Format_RGB32);
    for (int quality : {92, 75}) {
      ASSERT_TRUE(pixels.save(QString::fromStdString((out / "qt.jpg").string()), "JPG", quality) &&
                  WriteJpeg(pixels, out / "own.jpg", quality));
      EXPECT_EQ(ReadFile(out / "own.jpg"), ReadFile(out / "qt.jpg")) << picture << " at " << quality;
    }
  }
}

TEST(GraphDrawer, LimitsSwitchRemovesTheLimitLines) {
  TempDir with, without;
  DrawSeriesGraphs(AirlineInput(), GraphPreferences{}, with.path());
  GraphPreferences prefs;
  prefs.no_limits = true;
  DrawSeriesGraphs(AirlineInput(), prefs, without.path());
  const QImage a = Load(with / "AIRLINEfore.jpg");
  const QImage b = Load(without / "AIRLINEfore.jpg");
  EXPECT_GT(Count(a, Green), 300);
  EXPECT_LT(Count(b, Green), 20);
  EXPECT_GT(Count(b, Red), 300);
}

TEST(GraphDrawer, FaultsMakeNoPictureAndNoCrash) {
  TempDir out;
  GraphInput empty;
  empty.series_name = "EMPTY";
  EXPECT_FALSE(DrawSeriesGraphs(empty, GraphPreferences{}, out.path()).Any());
  EXPECT_TRUE(std::filesystem::is_empty(out.path()));

  GraphInput missing = AirlineInput();
  missing.series_name = "NOFIT";
  missing.fitted.assign(144, kMissingValue);
  missing.residuals.assign(144, kMissingValue);
  const GraphFlags flags = DrawSeriesGraphs(missing, GraphPreferences{}, out.path());
  EXPECT_TRUE(flags.Drawn(GraphKind::Act));
  EXPECT_TRUE(flags.Drawn(GraphKind::ActFore));
  EXPECT_FALSE(flags.Drawn(GraphKind::ActFit));
  EXPECT_FALSE(flags.Drawn(GraphKind::Res));
  EXPECT_FALSE(std::filesystem::exists(out / "NOFITres.jpg"));

  // A constant series and a single point still draw.
  GraphInput flat;
  flat.series_name = "FLAT";
  flat.actuals.assign(1, 5.0);
  flat.begin_year = 2020;
  EXPECT_TRUE(DrawSeriesGraphs(flat, GraphPreferences{}, out.path()).Drawn(GraphKind::Act));

  // A folder that cannot be written: flags stay clear.
  EXPECT_FALSE(DrawSeriesGraphs(AirlineInput(), GraphPreferences{}, out / "no" / "such").Any());
}

// A line stroked in slices must give exactly the pixels of one stroke: a monthly series
// with noise and a pulse, one with gaps and lone points, a short one, a steep wide
// translucent one, each within the drawer's panel clip.
TEST(GraphDrawer, SlicedStrokeGivesTheSinglePixels) {
  const struct {
    const char* name;
    int points, alpha, gap_every;
    double width, swing;
  } cases[] = {{"monthly, noise and pulse", 168, 255, 0, 2.0, 120},
               {"gaps and lone points", 144, 255, 7, 2.4, 60},
               {"short", 12, 255, 0, 2.0, 200},
               {"steep, wide, translucent", 300, 150, 0, 3.6, 260}};
  for (const auto& c : cases) {
    std::vector<std::optional<QPointF>> points(c.points);
    unsigned seed = 17;
    for (int i = 0; i < c.points; ++i) {
      seed = seed * 1103515245u + 12345u;
      const double noise = 40 * (((seed >> 16) % 1000) / 1000.0 - 0.5) + (i == c.points / 2 ? 180 : 0);
      if (!c.gap_every || (i % c.gap_every != 3 && i % c.gap_every != 5))
        points[i] = QPointF(70.5 + 880.0 * i / (c.points - 1), 300 + c.swing * std::sin(i * 0.52) + noise);
    }
    QImage whole(1000, 600, QImage::Format_RGB32);
    whole.fill(Qt::white);
    QImage sliced = whole, blank = whole;
    for (auto [image, slice] : {std::pair{&whole, 0}, std::pair{&sliced, kStrokeSliceWidth}}) {
      QPainter p(image);
      p.setRenderHint(QPainter::Antialiasing, true);
      p.setClipRect(QRectF(60, 56, 880, 420).adjusted(-3, -3, 3, 3));
      StrokePolyline(p, points, QPen(QColor(30, 95, 168, c.alpha), c.width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin),
                     slice);
    }
    EXPECT_NE(whole, blank) << c.name;
    EXPECT_TRUE(whole == sliced) << c.name;
  }
}


}  // namespace
}  // namespace tessaly::report
