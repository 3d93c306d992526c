#!/usr/bin/env bash
# Builds the embosser protocol core natively with clang under AddressSanitizer and
# UndefinedBehaviorSanitizer, runs its unit tests, then fuzzes the reply parser.
#
#   BUILD_DIR     build folder (default: build, relative to the repository); the native
#                 build goes to $BUILD_DIR/native
#   FUZZ_SECONDS  fuzzing time (default: 60)
#   FUZZ_SEED     the fuzzer's seed (default: a new one each run, printed); the same seed
#                 and corpus repeat a run
#   CXX           the clang++ to build with (default: the first clang++ that links a
#                 fuzzer with the sanitizers: clang++, then clang++-N, newest first)
#
# A finding (crash, leak, timeout or a broken invariant) is kept in
# $BUILD_DIR/native/fuzz-findings/, and the command that replays it is printed.
set -euo pipefail

repo=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build_root=${BUILD_DIR:-build}
case "$build_root" in /*) ;; *) build_root="$repo/$build_root" ;; esac
build="$build_root/native"
fuzz_seconds=${FUZZ_SECONDS:-60}

# A clang++ whose runtimes are installed: it links a fuzzer with the sanitizers.
links_fuzzer() {
    local probe
    probe=$(mktemp -d)
    printf 'extern "C" int LLVMFuzzerTestOneInput(const unsigned char*, unsigned long) { return 0; }\n' >"$probe/f.cpp"
    "$1" -fsanitize=fuzzer,address,undefined "$probe/f.cpp" -o "$probe/f" >/dev/null 2>&1
    local status=$?
    rm -rf "$probe"
    return $status
}
cxx=""
for candidate in ${CXX:-} clang++ $(ls /usr/bin/clang++-[0-9]* 2>/dev/null | sort -t- -k2 -n -r); do
    if command -v "$candidate" >/dev/null 2>&1 && links_fuzzer "$candidate"; then
        cxx=$(command -v "$candidate")
        break
    fi
done
if [ -z "$cxx" ]; then
    echo "no clang++ here links a fuzzer with the sanitizers: install clang and libclang-rt-dev" >&2
    exit 1
fi
cc=$(dirname "$cxx")/$(basename "$cxx" | sed 's/clang++/clang/')
[ -x "$cc" ] || cc=$(command -v clang)

generator=()
if command -v ninja >/dev/null 2>&1; then generator=(-G Ninja); fi

echo "== configure $build with $cxx"
CC="$cc" CXX="$cxx" cmake -S "$repo" -B "$build" "${generator[@]}" -DCMAKE_BUILD_TYPE=Debug

echo "== build"
cmake --build "$build" --parallel

echo "== unit tests"
(cd "$build" && ctest --output-on-failure --parallel "$(nproc 2>/dev/null || echo 2)")

fuzz_seed=${FUZZ_SEED:-$(( (RANDOM << 15 | RANDOM) + 1 ))}
fuzzer="$build/tests/native/legacy_reply_fuzzer"
echo "== fuzz legacy_reply_fuzzer for ${fuzz_seconds}s, seed $fuzz_seed (FUZZ_SEED=$fuzz_seed repeats it)"
corpus="$build/fuzz_corpus"
findings="$build/fuzz-findings"
rm -rf "$corpus"
mkdir -p "$corpus" "$findings"
cp "$repo/tests/native/fuzz_corpus/"* "$corpus/"
# libFuzzer exits non-zero on a crash, a sanitizer report, a timeout or a broken
# invariant, and writes the input to $findings, never into the repository.
started="$build/fuzz-started"
touch "$started"
status=0
"$fuzzer" -seed="$fuzz_seed" -max_total_time="$fuzz_seconds" -max_len=4095 -print_final_stats=1 \
  -artifact_prefix="$findings/" "$corpus" || status=$?
if [ "$status" -ne 0 ]; then
    echo "== the fuzzer found a fault (exit $status, seed $fuzz_seed); to replay it:"
    found=$(find "$findings" -type f -newer "$started")
    [ -n "$found" ] || echo "   (no input was written: the fault is in the fuzzer's own start)"
    for input in $found; do echo "   $fuzzer $input"; done
    exit "$status"
fi

echo "== native core: all passed"
