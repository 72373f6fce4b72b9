#!/usr/bin/env bash
# Configures and builds one flavour: scripts/build.sh <build-dir> [extra cmake options...]
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
dir="$1"
shift
cmake -S "$root" -B "$dir" -G Ninja "$@"
cmake --build "$dir" --parallel "$(nproc)"
