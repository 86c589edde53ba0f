#pragma once
// Strokes a chart's data line in vertical slices: the same pixels as one stroke of the
// whole line, at a fraction of the cost.
//
// The painter's antialiasing rasterizer works through a wide stroke in horizontal bands
// of a few scan lines each (as many as its small cell pool holds) and walks the whole
// outline again for every band, so a line across the picture costs about the square of
// its length. A slice strokes only the stretch of the line that can reach its columns,
// clipped to them. The outline is flattened curve by curve, so within the slice's columns
// it is the whole line's outline, edge for edge; what differs lies left (or right) of the
// columns and differs by a closed curve, which adds nothing to the winding the rasterizer
// sums from the left. Each pixel thus gets the same coverage and the same colour.
#include <QPainter>
#include <QPen>
#include <QPointF>

#include <optional>
#include <vector>

namespace tessaly::report {

// Narrow slices cost least (a monthly line of 168 points: a third of the single stroke's
// instructions at 32 pixels, half at 160); narrower ones gain nothing more.
inline constexpr int kStrokeSliceWidth = 32;

// Strokes the polyline through `points` with `pen` (a missing point breaks the line, as
// a gap in the data), the points in increasing x. A solid pen with round joins on a
// painter without a transform is stroked in slices of `slice_width` pixels (0: whole);
// any other line whole.
void StrokePolyline(QPainter& p, const std::vector<std::optional<QPointF>>& points, const QPen& pen,
                    int slice_width = kStrokeSliceWidth);

}  // namespace tessaly::report
