#pragma once
// The chart drawer: paints the nine graphs of a series off-screen and writes them as JPEG
// files. The header is free of Qt so that the run can call it like any other function;
// the drawing itself needs no display (an off-screen Qt GUI application is made when the
// process has none).
#include <array>
#include <filesystem>
#include <functional>

#include "report/graph_plan.h"

namespace tessaly::report {

// Which pictures were made, by graph (G1 to G9): the tree shows only these.
struct GraphFlags {
  std::array<bool, 9> drawn{};
  bool Drawn(GraphKind kind) const { return drawn[static_cast<int>(kind) - 1]; }
  bool Any() const;
};

// Pixel size of a picture: the report pane's when a window gives one.
struct GraphSize {
  int width = 1000;
  int height = 600;
};

// The size of the pictures for a report pane of that inner size: 83 % of its width and
// 88 % of its height; the default size when there is no pane (an unattended run), and
// never smaller than 480 x 300.
GraphSize GraphSizeForPane(int pane_width, int pane_height);

// Draws the graphs the preferences ask for, in the run's order, as
// <output_folder>/<series><suffix>. A graph with nothing to draw, or whose file cannot be
// written, is simply not made: its flag stays clear and the others go on. No message.
// after_each, when given, is called after every picture (the desktop lets its windows
// redraw there, so the progress window's clock keeps moving while the pictures are made).
GraphFlags DrawSeriesGraphs(const GraphInput& input, const GraphPreferences& prefs,
                            const std::filesystem::path& output_folder, GraphSize size = {},
                            const std::function<void()>& after_each = {});

// Paints one planned graph to a JPEG file; false (and no file) on any fault.
[[nodiscard]] bool DrawGraphFile(const GraphPlan& plan, const std::filesystem::path& file, GraphSize size = {});

}  // namespace tessaly::report
