# One Wine session for a whole run: a throwaway prefix under the build folder, one Xvfb,
# a persistent wineserver and one background program that keeps the session warm.
#
#   wine_session_start BUILD_DIR   sets WINEPREFIX, DISPLAY, WINE64 and exports them;
#                                  says why and fails when Xvfb or the prefix cannot be had
#   wine_session_stop

# Wine's programs, looked up when a session starts: on a fresh machine Wine is only
# installed after this file has been read.
wine_find_programs() {
    [ -n "${WINE64:-}" ] && [ -x "$WINE64" ] || WINE64=/usr/lib/wine/wine64
    [ -x "$WINE64" ] || WINE64=$(command -v wine64 || command -v wine)
    [ -n "${WINESERVER:-}" ] && [ -x "$WINESERVER" ] || WINESERVER=/usr/lib/wine/wineserver64
    [ -x "$WINESERVER" ] || WINESERVER=$(command -v wineserver64 || command -v wineserver)
}
wine_find_programs

wine_session_start() {
    local build_dir=$1
    wine_find_programs
    mkdir -p "$build_dir"
    export WINEPREFIX="$build_dir/wineprefix"
    export WINEDEBUG=-all
    export WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe=d"
    export WINEARCH=win64
    export WINE64 WINESERVER

    if [ -z "${OZDK_USE_DISPLAY:-}" ]; then
        local fd_file
        fd_file=$(mktemp)
        Xvfb -displayfd 3 -screen 0 1600x1200x24 -nolisten tcp 3>"$fd_file" >/dev/null 2>&1 &
        OZDK_XVFB_PID=$!
        # Xvfb writes its display number once it takes connections.
        local tries=0
        while [ ! -s "$fd_file" ] && [ $tries -lt 100 ] && kill -0 "$OZDK_XVFB_PID" 2>/dev/null; do
            sleep 0.1
            tries=$((tries + 1))
        done
        local display
        display=$(cat "$fd_file")
        rm -f "$fd_file"
        if [ -z "$display" ] || ! kill -0 "$OZDK_XVFB_PID" 2>/dev/null; then
            echo "wine session: Xvfb did not start (no display after $((tries * 100)) ms)" >&2
            return 1
        fi
        export DISPLAY=":$display"
    fi

    if [ -z "$WINE64" ] || [ ! -x "$WINE64" ] || [ -z "$WINESERVER" ] || [ ! -x "$WINESERVER" ]; then
        echo "wine session: wine64 or wineserver not found" >&2
        return 1
    fi
    "$WINESERVER" -k >/dev/null 2>&1 || true
    rm -rf "$WINEPREFIX"
    # wineboot's exit status also counts the 32-bit half, which a 64-bit-only Wine lacks;
    # the prefix is made when its system folder is there (the registry reaches the disk
    # only later).
    local boot_log="$build_dir/wineboot.log"
    "$WINE64" wineboot -i >"$boot_log" 2>&1
    echo "wineboot: exit status $?" >>"$boot_log"
    if [ ! -f "$WINEPREFIX/drive_c/windows/system32/kernel32.dll" ]; then
        echo "wine session: wineboot could not prepare $WINEPREFIX (see $boot_log)" >&2
        return 1
    fi
    if ! "$WINE64" reg add 'HKCU\Software\Wine\WineDbg' /v ShowCrashDialog /t REG_DWORD /d 0 /f >>"$boot_log" 2>&1 ||
        ! "$WINE64" reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /t REG_SZ /d N /f >>"$boot_log" 2>&1; then
        echo "wine session: the prefix's settings could not be written (see $boot_log)" >&2
        return 1
    fi
    "$WINESERVER" -p || true  # fails when the server is already up, which is as good
}

# Runs a Windows program of the session in the background for the session's life.
wine_session_keep() {
    "$WINE64" "$@" </dev/null >/dev/null 2>&1 &
}

wine_session_stop() {
    "$WINESERVER" -k >/dev/null 2>&1 || true
    if [ -n "${OZDK_XVFB_PID:-}" ]; then
        kill "$OZDK_XVFB_PID" >/dev/null 2>&1 || true
        wait "$OZDK_XVFB_PID" 2>/dev/null || true
    fi
}

# unix_to_windows PATH: the Windows view of a Unix path.
unix_to_windows() {
    printf 'Z:%s' "$1" | tr '/' '\\'
}
