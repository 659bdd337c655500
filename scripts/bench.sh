#!/usr/bin/env bash
# Builds and runs every benchmark; each prints its ratios against its in-run baseline.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/build.sh
for b in build/bin/bench_*; do
    [ -x "$b" ] || continue
    echo "== $(basename "$b")"
    "$b" "$@"
done
