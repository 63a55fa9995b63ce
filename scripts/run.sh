#!/usr/bin/env bash
# The main job: installs what is missing, builds, and opens the front panel when there is a
# display. Without one it converts a melody to a Standard MIDI File instead: a melody of the
# benchmark set beside the repository when it is there, otherwise tones generated here.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
bash scripts/build.sh build
if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
  exec build/app/vocato
fi

bench="$(git rev-parse --show-toplevel 2>/dev/null || pwd)/../shared/bench-data/public/audio"
input="$bench/p04_flute_ashover42.flac"
args=(--preset 18 --program 73)
if [ ! -f "$input" ]; then
  input=build/run-melody.wav
  args=(--preset 2)
  parts=()
  for hz in 220 247 262 294 330; do
    sox -n -r 44100 -b 16 -c 1 "build/run-$hz.wav" synth 0.4 sine "$hz" fade 0.01 0.4 0.05
    parts+=("build/run-$hz.wav")
  done
  sox "${parts[@]}" "$input"
  rm -f "${parts[@]}"
fi
# The node's diagnostic lines come first; the summary is the last line.
build/app/vocato convert "$input" -o build/run-output.mid "${args[@]}" | tail -n 1
