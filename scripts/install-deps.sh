#!/usr/bin/env bash
# Installs everything Vocato needs to build, run, test and benchmark on Debian 12.
# Safe to run again: apt-get skips what is already there.
set -euo pipefail

packages=(
  build-essential cmake pkg-config ninja-build
  libgtest-dev libgmock-dev libbenchmark-dev libcli11-dev
  libsndfile1-dev libfluidsynth-dev fluid-soundfont-gm
  libjack-jackd2-dev jackd2 libasound2-dev libasound2-plugins
  qt6-base-dev qt6-base-dev-tools libgl-dev fonts-dejavu-core xvfb xauth
  lv2-dev liblilv-dev lilv-utils sordi jalv
  python3-mido python3-mir-eval python3-numpy aubio-tools sox fluidsynth timgm6mb-soundfont
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

if [ "$(id -u)" -ne 0 ]; then
  echo "install-deps: missing packages (${missing[*]}); run this script as root" >&2
  exit 1
fi

export DEBIAN_FRONTEND=noninteractive
# Another apt process (unattended upgrades, a second shell) may hold the lock for a while.
apt_opts=(-y -q -o DPkg::Lock::Timeout=600)
apt-get "${apt_opts[@]}" update
apt-get "${apt_opts[@]}" install --no-install-recommends "${missing[@]}"
