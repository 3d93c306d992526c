#!/usr/bin/env bash
# Builds ozdkrnui.dll and runs the whole test suite: the protocol core natively under
# the sanitizers (with a bounded fuzzing run), then every test under Wine.
#
# Environment: BUILD_DIR (default ./build); OZDK_SKIP_NATIVE=1 skips the native part;
# OZDK_CTEST_ARGS passes arguments to the Wine run's ctest (for example "-R Trace").
set -uo pipefail
source "$(dirname "$0")/lib/common.sh"
ensure_packages "${BUILD_PACKAGES[@]}" "${WINE_PACKAGES[@]}" "${NATIVE_PACKAGES[@]}" || exit 1

passed=0
failed=0
# count_results LOG STATUS: adds ctest's totals to the run's. A run without a summary,
# or one that failed without counting a failed test, counts as one failure. The log is
# read as text whatever bytes the tests printed.
count_results() {
    local line total fails
    line=$(grep -a -E '^[0-9]+% tests passed, [0-9]+ tests? failed out of [0-9]+' "$1" | tail -n 1)
    if [ -z "$line" ]; then
        failed=$((failed + 1))
        return
    fi
    fails=$(echo "$line" | sed -E 's/.* ([0-9]+) tests? failed out of.*/\1/')
    total=$(echo "$line" | sed -E 's/.*out of ([0-9]+).*/\1/')
    passed=$((passed + total - fails))
    failed=$((failed + fails))
    if [ "$2" -ne 0 ] && [ "$fails" -eq 0 ]; then
        failed=$((failed + 1))
    fi
}

echo "== native protocol core (sanitizers, fuzzing)"
native_log="$BUILD_DIR/native-core.log"
if [ -z "${OZDK_SKIP_NATIVE:-}" ]; then
    bash "$OZDK_ROOT/scripts/run-native-core.sh" 2>&1 | tee "$native_log"
    native_status=${PIPESTATUS[0]}
    [ "$native_status" -ne 0 ] && echo "native core: failed (unit tests, build or fuzzing)"
    count_results "$native_log" "$native_status"
fi

echo "== Windows build"
if ! configure_and_build_windows "$BUILD_DIR/win"; then
    echo "the Windows build failed"
    echo "$passed passed, $((failed + 1)) failed"
    exit 1
fi

echo "== tests under Wine"
trap wine_session_stop EXIT
if ! wine_session_start "$BUILD_DIR/win"; then
    echo "the Wine session could not be started"
    echo "$passed passed, $((failed + 1)) failed"
    exit 1
fi
wine_session_keep "$BUILD_DIR/win/tools/wine_prefix/session_keeper.exe"
if ! prepare_test_prefix "$BUILD_DIR/win"; then
    echo "the test prefix could not be prepared"
    echo "$passed passed, $((failed + 1)) failed"
    exit 1
fi
wine_log="$BUILD_DIR/wine-tests.log"
(cd "$BUILD_DIR/win" && timeout 1500 ctest --output-on-failure --timeout 180 ${OZDK_CTEST_ARGS:-}) 2>&1 | tee "$wine_log"
count_results "$wine_log" "${PIPESTATUS[0]}"

echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
