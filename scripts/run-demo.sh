#!/usr/bin/env bash
# The main job: builds ozdkrnui.dll and the host that loads it like the printer driver's
# user-interface host, starts the embosser simulator on 127.0.0.2 (settings query on
# port 80, raw print port 9100), prepares a Wine prefix with a demo printer of the test
# driver whose port is a Standard TCP/IP port of that embosser, and opens the printer's
# printing preferences and properties with the plug-in's pages. The properties open on
# the "Device Settings" page, so the plug-in reads the embosser's settings and shows
# them in its item tree.
#
# The printer's jobs travel as a Standard TCP/IP port sends them: Wine has no such port,
# so the printer's port is a pipe to raw_job_sender (built with the simulator), which
# sends each job over TCP to 127.0.0.2:9100 and keeps a copy in $BUILD_DIR/demo/jobs.prn.
# What the embosser takes from them it keeps until it is stopped, so a change applied in
# "Device Settings" is what the next sheet reads.
#
# With a display ($DISPLAY set) the sheets open on it for a person, one after the other,
# and then the printer's properties once more, to see what was applied read back.
# Without one they open on a private Xvfb screen, are photographed and closed: the
# printing preferences once per page of the plug-in, each brought to the front in turn
# ($BUILD_DIR/demo/screenshot-layout.png, screenshot-paper-media.png,
# screenshot-quorl.png: the tab's title in lower case), with every dialog those pages open
# (screenshot-layout-advanced.png, screenshot-paper-media-advanced.png and its
# -custom-media-type and -add-form dialogs, screenshot-quorl-advanced.png,
# screenshot-quorl-2-in-1.png), the properties on their Device Settings page
# (screenshot-printer.png) and on the plug-in's Service page, which shows the
# embosser's identity (screenshot-printer-service.png). Then the full cycle: a new sheet
# sets "Top Margin" to 1.00, applies and closes, and a further one reads the embosser
# again and is photographed (screenshot-printer-after-apply.png). Last, both sheets are
# photographed as people who see little use them: in the high-contrast black theme
# (screenshot-high-contrast-*.png) and with text at 200% (screenshot-200-percent-*.png).
# The paths are printed at the end.
#
# What the embosser does, to see what a person sees with a broken one:
#   --reply FILE    answers with the file's bytes (as they stand when they begin with
#                   "HTTP/", else as the body after an "HTTP/1.1 200 OK" head)
#   --silent        takes the request and never answers
#   --unreachable   its address takes no connection at all
#
# Environment: BUILD_DIR (default ./build).
set -uo pipefail
SIMULATOR_ARGS=()
ANSWERING=1  # the embosser answers the settings query
while [ $# -gt 0 ]; do
    case "$1" in
        --reply)
            [ $# -ge 2 ] && [ -r "$2" ] || { echo "--reply needs a readable file" >&2; exit 2; }
            SIMULATOR_ARGS+=(--reply "$(cd "$(dirname "$2")" && pwd)/$(basename "$2")")
            shift 2 ;;
        --silent) SIMULATOR_ARGS+=(--mode silent); ANSWERING=; shift ;;
        --unreachable) SIMULATOR_ARGS+=(--mode unreachable); ANSWERING=; shift ;;
        *) echo "usage: $0 [--reply FILE | --silent | --unreachable]" >&2; exit 2 ;;
    esac
done
source "$(dirname "$0")/lib/common.sh"
ensure_packages "${BUILD_PACKAGES[@]}" "${WINE_PACKAGES[@]}" "${SCREENSHOT_PACKAGES[@]}" g++ || exit 1

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
EMBOSSER_ADDRESS=127.0.0.2

echo "== starting the embosser simulator on $EMBOSSER_ADDRESS:80 and :9100"
SIMULATOR="$BUILD_DIR/win/native/embosser_simulator"
SENDER="$BUILD_DIR/win/native/raw_job_sender"
rm -f "$DEMO_DIR/jobs.prn"
SIMULATOR_LOG="$DEMO_DIR/simulator.log"
"$SIMULATOR" --address "$EMBOSSER_ADDRESS" --port 80 "${SIMULATOR_ARGS[@]}" >"$SIMULATOR_LOG" 2>&1 &
SIMULATOR_PID=$!
stop_demo() {
    if kill -0 "$SIMULATOR_PID" 2>/dev/null; then
        kill "$SIMULATOR_PID" 2>/dev/null
        wait "$SIMULATOR_PID" 2>/dev/null
        echo "embosser simulator: $(tail -n 1 "$SIMULATOR_LOG")"
    fi
    [ -n "${WINEPREFIX:-}" ] && wine_session_stop
}
trap stop_demo EXIT
for _ in $(seq 50); do
    grep -q "^embosser_simulator: [a-z]* on" "$SIMULATOR_LOG" 2>/dev/null && break
    kill -0 "$SIMULATOR_PID" 2>/dev/null || break
    sleep 0.1
done
if ! grep -q "^embosser_simulator: [a-z]* on" "$SIMULATOR_LOG"; then
    echo "the embosser simulator did not start on $EMBOSSER_ADDRESS:80 and :9100:"
    cat "$SIMULATOR_LOG"
    exit 1
fi

echo "== preparing the Wine prefix"
# The demo's own prefix, so that a test run in the same build folder is not disturbed.
wine_session_start "$DEMO_DIR" || exit 1
wine_session_keep "$BUILD_DIR/win/tools/wine_prefix/session_keeper.exe"
if ! prepare_test_prefix "$BUILD_DIR/win"; then
    echo "the Wine prefix could not be prepared"
    exit 1
fi
"$WINE64" "$HOST" --add-printer "$PRINTER" --driver "Test Embosser" --port "|$SENDER $EMBOSSER_ADDRESS:9100 --copy $DEMO_DIR/jobs.prn" \
    --network-host "$EMBOSSER_ADDRESS" || exit 1

echo "== opening the printer's sheets"
if [ -n "${OZDK_USE_DISPLAY:-}" ]; then
    "$WINE64" "$HOST" --printer "$PRINTER" --show-device-settings --interactive
    status=$?
    if [ $status -eq 0 ] && [ -n "$ANSWERING" ]; then
        echo "== the printer's properties once more: what you applied, read back from the embosser"
        "$WINE64" "$HOST" --printer "$PRINTER" --sheet printer --show-device-settings --interactive
        status=$?
    fi
else
    rm -f "$DEMO_DIR"/screenshot*.png
    "$WINE64" "$HOST" --printer "$PRINTER" --show-device-settings --screenshot "$DEMO_DIR/screenshot.png"
    status=$?
    if [ $status -eq 0 ] && [ -n "$ANSWERING" ]; then
        echo "== the full cycle: Top Margin 1.00 applied, then read back by a new sheet"
        "$WINE64" "$HOST" --printer "$PRINTER" --sheet printer --show-device-settings --no-call-log \
            --set-device-item 40=1.00 --apply &&
            "$WINE64" "$HOST" --printer "$PRINTER" --sheet printer --show-device-settings --no-call-log \
                --screenshot "$DEMO_DIR/screenshot-printer-after-apply.png"
        status=$?
        # The Service page photographed with it is the one above.
        rm -f "$DEMO_DIR/screenshot-printer-after-apply-service.png"
    fi
    if [ $status -eq 0 ]; then
        echo "== for people who see little: the high-contrast black theme, and text at 200%"
        "$WINE64" "$HOST" --printer "$PRINTER" --sheet both --show-device-settings --no-call-log \
            --high-contrast black --screenshot "$DEMO_DIR/screenshot-high-contrast.png"
        status=$?
        # Text size is read when a program starts: set for the next one only.
        "$WINE64" reg add 'HKCU\Control Panel\Desktop' /v LogPixels /t REG_DWORD /d 192 /f >/dev/null 2>&1
        "$WINE64" "$HOST" --printer "$PRINTER" --sheet both --show-device-settings --no-call-log \
            --screenshot "$DEMO_DIR/screenshot-200-percent.png" || status=1
        "$WINE64" reg delete 'HKCU\Control Panel\Desktop' /v LogPixels /f >/dev/null 2>&1
    fi
    for shot in "$DEMO_DIR"/screenshot*.png; do
        [ -f "$shot" ] && echo "screenshot: $shot"
    done
fi
exit $status
