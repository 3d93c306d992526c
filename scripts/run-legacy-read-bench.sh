#!/usr/bin/env bash
# Runs the benchmark of the network read of the embosser's settings under Wine:
# builds what it needs, prepares a throwaway prefix with the test driver, and runs
# legacy_read_bench (arguments are passed on: [iterations] [loopback address]).
#
# Environment: BUILD_DIR (default ./build).
set -uo pipefail
source "$(dirname "$0")/lib/common.sh"

win="$BUILD_DIR/win"
cmake -S "$OZDK_ROOT" -B "$win" -G Ninja \
    -DCMAKE_TOOLCHAIN_FILE="$OZDK_ROOT/cmake/mingw-w64-x86_64.cmake" \
    -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null || exit 1
cmake --build "$win" --target ozdkrnui install_driver session_keeper legacy_read_bench || exit 1

trap wine_session_stop EXIT
wine_session_start "$win" || exit 1
wine_session_keep "$win/tools/wine_prefix/session_keeper.exe"
prepare_test_prefix "$win" || exit 1
"$WINE64" "$win/tools/embosser_simulator/legacy_read_bench.exe" "$@"
