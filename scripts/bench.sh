#!/usr/bin/env bash
# Builds and runs every benchmark; each prints its ratios against its in-run baseline.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/build.sh
# The OpenGL benchmarks need a display: without one, run again on a virtual one (the build is then up to date).
if [ -z "${DISPLAY:-}" ] && command -v xvfb-run >/dev/null; then
    exec xvfb-run -a -s "-screen 0 1600x1000x24" "$0" "$@"
fi
for b in build/bin/bench_*; do
    [ -x "$b" ] || continue
    echo "== $(basename "$b")"
    "$b" "$@"
done
