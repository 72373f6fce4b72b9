#!/usr/bin/env bash
# Instructions per block of a benchmark room, counted by callgrind: unlike the benchmarks'
# times, the same figure whatever else the machine is doing, so two builds compare exactly.
# Counts two runs of different lengths and divides the difference by the extra blocks, which
# leaves out the building and the warm-up.
# Usage: scripts/instructions-per-block.sh [SOURCES SPEAKERS INTERNALS ROOM] (default 6 6 8 0)
# ROOM is the benchmarks' own: 0 flat shelves, 1 shaped shelves, 2 shaped shelves and air.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
if [ $# -eq 0 ]; then
  set -- 6 6 8 0
elif [ $# -ne 4 ]; then
  echo "usage: $0 [SOURCES SPEAKERS INTERNALS ROOM]" >&2
  exit 2
fi
room=("$@")
bash "$root/scripts/setup.sh" valgrind
bash "$root/scripts/build.sh" "$root/build/bench" -DCMAKE_BUILD_TYPE=Release -DTARVO_BUILD_BENCHMARKS=ON >/dev/null
program="$root/build/bench/bench/tarvo_room_blocks"
count() {
  local report
  # A room the program refuses ends the script with the program's own words.
  if ! report=$(valgrind --tool=callgrind --callgrind-out-file=/dev/null "$program" "${room[@]}" "$1" 2>&1); then
    grep -v '^==' <<< "$report" >&2
    exit 1
  fi
  sed -n 's/.*Collected : *\([0-9]*\).*/\1/p' <<< "$report"
}
short=$(count 500)
long=$(count 1500)
echo "room ${room[*]}: $(((long - short) / 1000)) instructions per block of 64"
