#!/usr/bin/env bash
# Regenerates the WAV files the reader is tested on, made by sox (a real peer): 441 samples of a
# 1 kHz sine at half scale, left channel; the right channel (where present) is the same sine at a
# quarter scale. No dither, so the integer files hold the rounded sine exactly.
set -euo pipefail
cd "$(dirname "$0")"
make() { sox -D -r 44100 -n "$@" synth 441s sine 1000 sine 1000 remix 1v0.5 2v0.25; }
make -e signed-integer -b 16 -c 2 pcm16-stereo.wav
make -e signed-integer -b 24 -c 2 pcm24-stereo.wav
make -e signed-integer -b 32 -c 2 pcm32-stereo.wav
make -e floating-point -b 32 -c 2 float32-stereo.wav
make -e floating-point -b 64 -c 2 float64-stereo.wav
# Three channels make sox write the extensible header.
sox -D -r 48000 -n -e signed-integer -b 24 -c 3 pcm24-three-channels.wav synth 441s sine 1000 sine 1000 sine 1000 remix 1v0.5 2v0.25 3v0.125
# 8-bit PCM is unsigned and is refused with a reason.
sox -D -r 44100 -n -e unsigned-integer -b 8 -c 1 pcm8-mono.wav synth 441s sine 1000
