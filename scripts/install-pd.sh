#!/usr/bin/env bash
# Builds tarvoverb~ for Pure Data and installs the external with its help patch:
#   bash scripts/install-pd.sh [DIR]      (default: ~/.local/lib/pd/extra/tarvoverb~)
# Pd finds ~/.local/lib/pd/extra by itself; for another DIR add its parent to Pd's path.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
target="${1:-$HOME/.local/lib/pd/extra/tarvoverb~}"
# The compiler, CMake and Pd's header (puredata-dev), when they are missing.
bash "$root/scripts/setup.sh" puredata-dev
build="$root/build/pd-install"
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DTARVO_BUILD_TESTS=OFF -DTARVO_BUILD_TOOLS=OFF \
  -DTARVO_BUILD_HOST=OFF -DTARVO_BUILD_PD=ON
cmake --build "$build" --target tarvoverb_pd
mkdir -p "$target"
cp "$build/host/pd/tarvoverb~/tarvoverb~.pd_linux" "$build/host/pd/tarvoverb~/tarvoverb~-help.pd" "$target/"
echo "Installed in $target"
echo "Open the help: pd -path \"$(dirname "$target")\" -open \"$target/tarvoverb~-help.pd\""
echo "(or, in a patch, right-click a [tarvoverb~] box and choose Help)"
