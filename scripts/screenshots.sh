#!/bin/sh
# Captures the desktop as PNG files: the main window, the splash, the two preference
# dialogs (the graph dialog as loaded and with "Selected Graphs" chosen), the project forms
# (frmASCLoc, frmSelect, frmChooseOut, frmXMLName, frmEdit, frmSelectSeries), a run of the
# sample project (each wizard page on the automatic path "2. With User  Rules", the option
# tree's four panes, the progress window as it opens, in the engine and while graphs are drawn,
# alone and over the main window, the messages at the end), the main window after
# the run with a graph, a report, a text file, a series' overview and a summary shown, the
# step dialog of the "All" walk, the wizard's model pages for one and several series, the
# aggregation's frmAggSelect and frmAggParams at each stage of its questions (agg_*.png), and
# the help window.
#   scripts/screenshots.sh OUTPUT_FOLDER [PROGRAM_FOLDER]
# PROGRAM_FOLDER is the built program folder (default: $TESSALY_BUILD_DIR/program, or
# build/program, of this tree). The program runs in a temporary copy of it, under
# xvfb-run, with its own settings folder, so neither the build tree nor the user's
# settings are touched.
set -eu

out=${1:?usage: screenshots.sh OUTPUT_FOLDER [PROGRAM_FOLDER]}
here=$(cd "$(dirname "$0")/.." && pwd)
program=${2:-$here/${TESSALY_BUILD_DIR:-build}/program}
if [ ! -x "$program/tessaly" ]; then
  echo "screenshots.sh: no tessaly in $program (build it first)" >&2
  exit 2
fi

mkdir -p "$out"
out=$(cd "$out" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp -a "$program/." "$work/program"
# The start-up check wants the engine library; a build without it still shows the windows.
[ -e "$work/program/libquorvane.so" ] || : > "$work/program/libquorvane.so"

cd "$work/program"
XDG_CONFIG_HOME="$work/config" TESSALY_SCREENSHOT_DIR="$out" \
  timeout 600 xvfb-run -a -s "-screen 0 1280x800x24" ./tessaly /NS
ls "$out"/*.png
