#!/usr/bin/env bash
# Installs what the build needs on Debian 12, when it is missing, and any further packages
# named as arguments (the tests ask for faust, whose reverb is the benchmarks' peer, sox, a peer
# of the WAV tests, and clang with its runtime libraries, the second compiler and libFuzzer).
set -euo pipefail

packages=(cmake ninja-build g++ googletest libgtest-dev libgmock-dev libbenchmark-dev libeigen3-dev "$@")
missing=()
for p in "${packages[@]}"; do
  dpkg -s "$p" >/dev/null 2>&1 || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "Installing: ${missing[*]}"
  sudo_cmd=""
  [ "$(id -u)" -ne 0 ] && sudo_cmd="sudo"
  $sudo_cmd apt-get update -q
  DEBIAN_FRONTEND=noninteractive $sudo_cmd apt-get install -y -q "${missing[@]}"
fi
