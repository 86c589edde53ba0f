#!/usr/bin/env bash
# Configures and builds Tessaly with Ninja into ./build (or $TESSALY_BUILD_DIR).
set -euo pipefail
cd "$(dirname "$0")/.."
build_dir=${TESSALY_BUILD_DIR:-build}
cmake -S . -B "$build_dir" -G Ninja -DCMAKE_BUILD_TYPE=${CMAKE_BUILD_TYPE:-RelWithDebInfo} "$@" >/dev/null
cmake --build "$build_dir" -j "$(nproc)"
