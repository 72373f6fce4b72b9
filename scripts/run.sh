#!/usr/bin/env bash
# Sets everything up, builds, and runs the main job on its built-in default.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
bash "$root/scripts/setup.sh"
bash "$root/scripts/build.sh" "$root/build/release" -DCMAKE_BUILD_TYPE=Release -DTARVO_BUILD_TESTS=OFF
"$root/build/release/bin/tarvoverb-render" "$@"
