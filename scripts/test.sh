#!/usr/bin/env bash
# Sets everything up and runs the test suite: the tests of threads handing values to the audio
# thread (fixtures named *Concurrency*) under ThreadSanitizer, then the whole suite under
# AddressSanitizer and UndefinedBehaviorSanitizer with warnings as errors, then the whole suite
# in an optimised build.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
bash "$root/scripts/setup.sh" faust libxml2-utils liblo-dev pkg-config
jobs="$(nproc)"

echo "== thread sanitizer, concurrency tests"
bash "$root/scripts/build.sh" "$root/build/test-tsan" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTARVO_SANITIZE=thread \
  -DTARVO_BUILD_TOOLS=OFF
# --no-tests=error: a filter that matches nothing must fail, not pass silently.
TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1 \
  ctest --test-dir "$root/build/test-tsan" --output-on-failure -j "$jobs" -R Concurrency --no-tests=error

echo "== address and undefined-behaviour sanitizers"
bash "$root/scripts/build.sh" "$root/build/test-asan" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DTARVO_SANITIZE=address,undefined -DTARVO_WERROR=ON
ASAN_OPTIONS=detect_leaks=1:abort_on_error=1:allocator_may_return_null=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
  ctest --test-dir "$root/build/test-asan" --output-on-failure -j "$jobs" --no-tests=error

echo "== optimised build"
bash "$root/scripts/build.sh" "$root/build/test-release" -DCMAKE_BUILD_TYPE=Release -DTARVO_BUILD_BENCHMARKS=ON
ctest --test-dir "$root/build/test-release" --output-on-failure -j "$jobs" --no-tests=error
