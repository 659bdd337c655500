#!/usr/bin/env bash
# Configures and builds everything into ./build (or $BUILD_DIR).
set -euo pipefail
cd "$(dirname "$0")/.."
build_dir="${BUILD_DIR:-build}"
scripts/install-deps.sh
# Let a fresh clone in another directory reuse earlier compilations.
export CCACHE_BASEDIR="$PWD" CCACHE_NOHASHDIR=1
cmake -S . -B "$build_dir" -G Ninja -DCMAKE_BUILD_TYPE="${BUILD_TYPE:-RelWithDebInfo}" ${CMAKE_ARGS:-}
cmake --build "$build_dir" -j"$(nproc)"
