#!/usr/bin/env bash
# Builds the libFuzzer targets of fuzz/ with clang (AddressSanitizer and UndefinedBehaviorSanitizer)
# and runs each on its seed corpus for a bounded time; fails on the first crash, leak or timeout.
#   scripts/fuzz.sh [build-dir]       build-dir: one configured with -DTARVO_BUILD_FUZZERS=ON
#                                     (default build/fuzz, configured here)
#   TARVO_FUZZ_SECONDS=60             seconds per target
# New inputs found go to a scratch folder, not into the repository. A crashing input is left in
# <build-dir>/fuzz-artifacts/<Name>/: keep it as a regression test of the GoogleTest suite.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="${1:-$root/build/fuzz}"
seconds="${TARVO_FUZZ_SECONDS:-60}"

if [ ! -f "$build/CMakeCache.txt" ]; then
  CC=clang CXX=clang++ cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DTARVO_BUILD_FUZZERS=ON -DTARVO_BUILD_TESTS=OFF
fi

targets=()
for source in "$root"/fuzz/*Fuzzer.cpp; do
  targets+=("$(basename "$source" .cpp)")
done
cmake --build "$build" --parallel "$(nproc)" --target "${targets[@]}"

scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT
for target in "${targets[@]}"; do
  name="${target%Fuzzer}"
  corpus=()
  [ -d "$root/fuzz/corpus/${name,,}" ] && corpus=("$root/fuzz/corpus/${name,,}")
  artifacts="$build/fuzz-artifacts/$name/"
  mkdir -p "$artifacts" "$scratch/$name"
  echo "== fuzzing $name for $seconds s"
  if ! ASAN_OPTIONS=detect_leaks=1:allocator_may_return_null=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
    "$build/fuzz/$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -max_len=65536 \
      -artifact_prefix="$artifacts" -print_final_stats=1 "$scratch/$name" "${corpus[@]}" 2>"$scratch/$name.log"; then
    tail -n 60 "$scratch/$name.log"
    echo "fuzz.sh: $name crashed; the input is in $artifacts" >&2
    exit 1
  fi
  grep -E "^stat::number_of_executed_units|^Done" "$scratch/$name.log" || true
done
