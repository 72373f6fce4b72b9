#!/usr/bin/env bash
# Builds tarvoverb~ a second time against the real Max SDK headers and runs the host tests on
# it, when a max-sdk-base checkout sits beside the repository (../shared/max-sdk-base) or is
# named by TARVO_MAX_SDK. Says which of the two ran. The first run, against the substitute
# headers, is part of the ordinary test builds.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
sdk="${TARVO_MAX_SDK:-$root/../shared/max-sdk-base}"
bash "$root/scripts/setup.sh" libxml2-utils python3

if [ ! -f "$sdk/c74support/max-includes/ext.h" ]; then
  echo "== host tests against the Max SDK headers: skipped, no SDK at $sdk"
  exit 0
fi
sdk="$(cd "$sdk" && pwd)"
echo "== host tests against the Max SDK headers in $sdk"
cmake -S "$root" -B "$root/build/test-host-sdk" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DTARVO_MAX_SDK="$sdk" -DTARVO_BUILD_TOOLS=OFF -DTARVO_WERROR=ON
cmake --build "$root/build/test-host-sdk" --parallel "$(nproc)" --target tarvoverb_host_tests
ctest --test-dir "$root/build/test-host-sdk" --output-on-failure -j "$(nproc)" -R 'TarvoverbTilda' --no-tests=error
