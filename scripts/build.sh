#!/usr/bin/env bash
# Configures and builds everything into ./build (or $BUILD_DIR).
set -euo pipefail
cd "$(dirname "$0")/.."
build_dir="${BUILD_DIR:-build}"
scripts/install-deps.sh
cmake -S . -B "$build_dir" -G Ninja -DCMAKE_BUILD_TYPE="${BUILD_TYPE:-RelWithDebInfo}" ${CMAKE_ARGS:-}
cmake --build "$build_dir" -j"$(nproc)"
