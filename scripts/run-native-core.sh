#!/usr/bin/env bash
# Builds the embosser protocol core natively with clang under AddressSanitizer and
# UndefinedBehaviorSanitizer, runs its unit tests, then fuzzes the reply parser.
#
#   BUILD_DIR     build folder (default: build, relative to the repository); the native
#                 build goes to $BUILD_DIR/native
#   FUZZ_SECONDS  fuzzing time (default: 60)
set -euo pipefail

repo=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build_root=${BUILD_DIR:-build}
case "$build_root" in /*) ;; *) build_root="$repo/$build_root" ;; esac
build="$build_root/native"
fuzz_seconds=${FUZZ_SECONDS:-60}

generator=()
if command -v ninja >/dev/null 2>&1; then generator=(-G Ninja); fi

echo "== configure $build"
CC=clang CXX=clang++ cmake -S "$repo" -B "$build" "${generator[@]}" -DCMAKE_BUILD_TYPE=Debug

echo "== build"
cmake --build "$build" --parallel

echo "== unit tests"
(cd "$build" && ctest --output-on-failure --parallel "$(nproc 2>/dev/null || echo 2)")

echo "== fuzz legacy_reply_fuzzer for ${fuzz_seconds}s"
corpus="$build/fuzz_corpus"
artifacts="$build/fuzz_artifacts"
rm -rf "$corpus"
mkdir -p "$corpus" "$artifacts"
cp "$repo/tests/native/fuzz_corpus/"* "$corpus/"
# libFuzzer exits non-zero on a crash, a sanitizer report or a broken invariant; the
# finding is written to $artifacts, never into the repository.
"$build/tests/native/legacy_reply_fuzzer" \
  -max_total_time="$fuzz_seconds" -max_len=4095 -print_final_stats=1 \
  -artifact_prefix="$artifacts/" "$corpus"

echo "== native core: all passed"
