#!/usr/bin/env bash
# Installs what is missing, builds, and starts the viewer in standalone mode with the simulated camera.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/build.sh
exec build/bin/ZerlaneViewer -sa "$@"
