#!/usr/bin/env bash
# Installs every Debian package Tessaly needs to build, test and run.
# Safe to run twice: packages already present are skipped, and apt-get is
# called only when something is missing.
set -euo pipefail

packages=(
  # toolchain and build
  build-essential cmake ninja-build ccache pkg-config
  # tests
  googletest libgtest-dev libgmock-dev
  # desktop
  qt6-base-dev qt6-base-dev-tools qt6-charts-dev libgl-dev
  xvfb xauth fonts-dejavu-core
  # the interactive graphs: Qt Charts needs the OpenGL module's development files
  libqt6opengl6-dev
  # logic libraries
  libxml2-dev libxml2-utils libsqlite3-dev libeigen3-dev libboost-dev
  libxlsxwriter-dev libfreexl-dev libminizip-dev zlib1g-dev
  # link-tree site checks in a real browser
  chromium
  # reference values for the engine's estimates
  python3 python3-numpy python3-statsmodels
  # .xls workbooks made in the spreadsheet tests
  python3-xlwt
  # the check of function length (scripts/check-function-length.sh)
  universal-ctags
  # fuzzing and the sanitizer build: clang with libFuzzer and the sanitizer runtimes
  clang libclang-rt-14-dev
  libjpeg-dev  # the graphs' JPEG files, written directly
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  echo "install-deps: all ${#packages[@]} packages present"
  exit 0
fi

echo "install-deps: installing ${missing[*]}"
SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
