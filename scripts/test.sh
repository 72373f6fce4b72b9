#!/usr/bin/env bash
# Sets everything up and runs the test suite with both compilers: the tests of threads handing
# values to the audio thread (fixtures named *Concurrency*) under ThreadSanitizer built with gcc;
# the whole suite under AddressSanitizer and UndefinedBehaviorSanitizer built with clang, with
# warnings as errors, and the fuzz targets from that same build for a bounded time
# (TARVO_FUZZ_SECONDS each, default 60); then the whole suite in an optimised gcc build, also
# with warnings as errors.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
# faust: the reverb that the benchmarks compare with; sox: a real peer of the WAV tests;
# xmllint and liblo: independent readers of our XML and OSC packets;
# clang and its runtime libraries: the second compiler, libFuzzer and the sanitizers;
# Pd and its header: tarvoverb~ for Pd is built and tested in the real Pd.
bash "$root/scripts/setup.sh" faust sox libxml2-utils liblo-dev pkg-config python3 clang libclang-rt-dev \
  puredata-core puredata-dev
jobs="$(nproc)"

echo "== thread sanitizer (gcc), concurrency tests"
bash "$root/scripts/build.sh" "$root/build/test-tsan" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTARVO_SANITIZE=thread \
  -DTARVO_BUILD_TOOLS=OFF
# --no-tests=error: a filter that matches nothing must fail, not pass silently.
TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1 \
  ctest --test-dir "$root/build/test-tsan" --output-on-failure -j "$jobs" -R Concurrency --no-tests=error

echo "== address and undefined-behaviour sanitizers (clang), then the fuzz targets"
CC=clang CXX=clang++ bash "$root/scripts/build.sh" "$root/build/test-asan" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DTARVO_SANITIZE=address,undefined -DTARVO_WERROR=ON -DTARVO_BUILD_FUZZERS=ON
ASAN_OPTIONS=detect_leaks=1:abort_on_error=1:allocator_may_return_null=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
  ctest --test-dir "$root/build/test-asan" --output-on-failure -j "$jobs" --no-tests=error
bash "$root/scripts/fuzz.sh" "$root/build/test-asan"

# The object a second time, compiled against the real Max SDK headers when they are beside us.
bash "$root/scripts/test-host-sdk.sh"

echo "== optimised build (gcc)"
bash "$root/scripts/build.sh" "$root/build/test-release" -DCMAKE_BUILD_TYPE=Release -DTARVO_BUILD_BENCHMARKS=ON \
  -DTARVO_WERROR=ON
ctest --test-dir "$root/build/test-release" --output-on-failure -j "$jobs" --no-tests=error
