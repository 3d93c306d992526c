#!/usr/bin/env bash
# Runs the benchmarks by hand under Wine (they are not tests; bench/README.md has the
# figures): builds the DLL and the benchmark programs, prepares a throwaway prefix with
# the test driver, then
#   1. bench/ozdk_sheet_bench.exe: the printing preferences and the printer's properties
#      opened and closed through the host (soak: handles, GDI and USER objects, heap at
#      start and end; speed: the plug-in's sheets against blank host pages);
#   2. legacy_read_bench.exe: the network read of the embosser's settings with the trace
#      log on and off.
# Both serve a simulated embosser on loopback port 80 from inside the process, so as
# root the script runs itself in a private network namespace (unshare --net).
#
#   bash scripts/run-bench.sh [sheet bench arguments, e.g. --cycles 200 --rounds 30]
#
# Environment: BUILD_DIR (default ./build); OZDK_READ_BENCH_ITERATIONS (default 300).
set -uo pipefail
if [ -z "${OZDK_BENCH_NETNS:-}" ] && [ "$(id -u)" -eq 0 ] && command -v unshare >/dev/null; then
    export OZDK_BENCH_NETNS=1
    exec unshare --net bash -c 'ip link set lo up && exec bash "$0" "$@"' "$0" "$@"
fi
source "$(dirname "$0")/lib/common.sh"
ensure_packages "${BUILD_PACKAGES[@]}" "${WINE_PACKAGES[@]}" || exit 1

win="$BUILD_DIR/win"
echo "== building"
cmake -S "$OZDK_ROOT" -B "$win" -G Ninja \
    -DCMAKE_TOOLCHAIN_FILE="$OZDK_ROOT/cmake/mingw-w64-x86_64.cmake" \
    -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null || exit 1
cmake --build "$win" --target ozdkrnui install_driver session_keeper ozdk_sheet_bench legacy_read_bench \
    -- -j"$(nproc)" || exit 1

echo "== preparing the Wine prefix"
# The bench's own prefix, so that a test run in the same build folder keeps its own.
mkdir -p "$BUILD_DIR/bench"
trap wine_session_stop EXIT
wine_session_start "$BUILD_DIR/bench" || exit 1
wine_session_keep "$win/tools/wine_prefix/session_keeper.exe"
prepare_test_prefix "$win" || exit 1
echo "wine: $("$WINE64" --version), $(nproc) cores"

status=0
echo "== sheets: soak and speed"
"$WINE64" "$win/bench/ozdk_sheet_bench.exe" "$@" || status=1
echo "== network read: trace log on and off"
"$WINE64" "$win/tools/embosser_simulator/legacy_read_bench.exe" "${OZDK_READ_BENCH_ITERATIONS:-300}" || status=1
exit $status
