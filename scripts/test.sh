#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test (GUI suites on a virtual X display).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/build.sh
cd "${BUILD_DIR:-build}"
xvfb-run -a -s "-screen 0 1600x1200x24" ctest --output-on-failure --timeout 300 -j2
