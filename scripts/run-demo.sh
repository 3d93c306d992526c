#!/usr/bin/env bash
# The main job: builds ozdkrnui.dll and the host that loads it like the printer driver's
# user-interface host, prepares a Wine prefix with a demo printer of the test driver,
# and opens the printer's printing preferences and properties with the plug-in's pages.
#
# With a display ($DISPLAY set) the sheets open on it for a person, one after the other.
# Without one they open on a private Xvfb screen, are photographed
# ($BUILD_DIR/demo/screenshot.png and screenshot-printer.png) and closed.
#
# Environment: BUILD_DIR (default ./build).
set -uo pipefail
OZDK_ROOT=$(cd "$(dirname "$0")/.." && pwd)
export OZDK_ROOT
BUILD_DIR=${BUILD_DIR:-$OZDK_ROOT/build}
mkdir -p "$BUILD_DIR"
BUILD_DIR=$(cd "$BUILD_DIR" && pwd)
export BUILD_DIR

source "$OZDK_ROOT/scripts/lib/packages.sh"
source "$OZDK_ROOT/scripts/lib/wine-session.sh"
source "$OZDK_ROOT/scripts/lib/build.sh"
ensure_packages "${BUILD_PACKAGES[@]}" "${WINE_PACKAGES[@]}" "${SCREENSHOT_PACKAGES[@]}" || exit 1

if [ -n "${DISPLAY:-}" ]; then
    export OZDK_USE_DISPLAY=1
fi

echo "== building ozdkrnui.dll and the host"
if ! configure_and_build_windows "$BUILD_DIR/win"; then
    echo "the Windows build failed"
    exit 1
fi

DEMO_DIR="$BUILD_DIR/demo"
mkdir -p "$DEMO_DIR"
HOST="$BUILD_DIR/win/tools/host/ozdk_host.exe"
PRINTER="Tavrolin Demo"

echo "== preparing the Wine prefix"
# The demo's own prefix, so that a test run in the same build folder is not disturbed.
wine_session_start "$DEMO_DIR"
trap wine_session_stop EXIT
wine_session_keep "$BUILD_DIR/win/tests/session_keeper.exe"
if ! prepare_test_prefix "$BUILD_DIR/win"; then
    echo "the Wine prefix could not be prepared"
    exit 1
fi
"$WINE64" "$HOST" --add-printer "$PRINTER" --driver "Test Embosser" --port "|cat >> $DEMO_DIR/jobs.prn" || exit 1

echo "== opening the printer's sheets"
if [ -n "${OZDK_USE_DISPLAY:-}" ]; then
    "$WINE64" "$HOST" --printer "$PRINTER" --interactive
    status=$?
else
    rm -f "$DEMO_DIR/screenshot.png" "$DEMO_DIR/screenshot-printer.png"
    "$WINE64" "$HOST" --printer "$PRINTER" --screenshot "$DEMO_DIR/screenshot.png"
    status=$?
    for shot in "$DEMO_DIR/screenshot.png" "$DEMO_DIR/screenshot-printer.png"; do
        [ -f "$shot" ] && echo "screenshot: $shot"
    done
fi
exit $status
