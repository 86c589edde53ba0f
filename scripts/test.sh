#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test. Exit status 0 only when all pass.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
bash scripts/build.sh
build_dir=${TESSALY_BUILD_DIR:-build}
# The desktop tests draw off-screen; no display is needed.
export QT_QPA_PLATFORM=offscreen
ctest --test-dir "$build_dir" --output-on-failure -j "$(nproc)"
