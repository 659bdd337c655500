#!/usr/bin/env bash
# Installs, on Debian 12, whatever the build, the tests and the benchmarks need and is missing.
set -euo pipefail

packages=(
    cmake ninja-build g++ ccache pkg-config
    qt6-base-dev qt6-base-dev-tools libqt6opengl6-dev libgl-dev libglu1-mesa-dev
    xvfb xauth libgl1-mesa-dri fonts-dejavu-core
    libbenchmark-dev libyuv-dev
    libasio-dev libprotobuf-dev protobuf-compiler
    libavformat-dev libavcodec-dev libavutil-dev libswscale-dev ffmpeg
)

missing=()
for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done

if [ ${#missing[@]} -gt 0 ]; then
    echo "Installing: ${missing[*]}"
    sudo=""
    [ "$(id -u)" -eq 0 ] || sudo="sudo"
    $sudo apt-get update -q
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -q --no-install-recommends "${missing[@]}"
fi
