#!/usr/bin/env bash
# Configures and builds one tree. Usage: scripts/build.sh [BUILD_DIR] [extra cmake args...]
set -euo pipefail
cd "$(dirname "$0")/.."
dir=${1:-build}
shift || true
cmake -S . -B "$dir" -G Ninja "$@" >/dev/null
cmake --build "$dir" -j "$(nproc)"
