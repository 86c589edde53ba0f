#!/bin/sh
# Optional: R's forecast package, so that the accuracy benchmark can run auto.arima on the
# same series in the same run. Not part of scripts/install-deps.sh: CI does not need it.
set -e
if [ "$(id -u)" -ne 0 ]; then SUDO=sudo; else SUDO=; fi
$SUDO apt-get install -y --no-install-recommends r-cran-forecast
