#!/usr/bin/env bash
# Installs what is missing, builds, and runs the sample project with no window from a copy in
# a fresh folder; then says where the reports are.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
bash scripts/build.sh
build_dir=${TESSALY_BUILD_DIR:-build}
program="$(cd "$build_dir/program" && pwd)"
work=$(mktemp -d "${TMPDIR:-/tmp}/tessaly-sample-XXXXXX")
cp -r "$program/examples/." "$work/"

echo "run-sample: running $work/sample.xml"
status=0
"$program/tessaly" "$work/sample.xml" || status=$?

echo
echo "run-sample: the project (with the status of each series): $work/sample.xml"
echo "run-sample: reports, graphs and forecasts:                  $work/OUTPUT/"
echo "run-sample: all forecasts in one file:                      $work/OUTPUT/CONsample.PRO"
echo "run-sample: the browsable site:                             $work/OUTPUT/sample.html"
if [ -f "$program/Process Errors.Err" ]; then
  echo "run-sample: why files were rejected:                        $program/Process Errors.Err"
fi
echo "run-sample: the other samples run the same way: $program/tessaly $work/quarterly.xml"
exit $status
