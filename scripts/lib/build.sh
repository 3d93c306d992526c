# configure_and_build_windows BUILD_DIR: the DLL, its tests and the tools.
configure_and_build_windows() {
    local build_dir=$1
    cmake -S "$OZDK_ROOT" -B "$build_dir" -G Ninja \
        -DCMAKE_TOOLCHAIN_FILE="$OZDK_ROOT/cmake/mingw-w64-x86_64.cmake" \
        -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null || return 1
    cmake --build "$build_dir" -- -j"$(nproc)"
}

# prepare_test_prefix BUILD_DIR: the test driver, the plug-in and the run's work folder.
prepare_test_prefix() {
    local build_dir=$1
    export OZDK_WORK_DIR="$build_dir/work"
    rm -rf "$OZDK_WORK_DIR"
    mkdir -p "$OZDK_WORK_DIR"
    cp "$OZDK_ROOT/tests/data/test-printer.ppd" "$OZDK_WORK_DIR/test-printer.ppd"
    "$WINE64" "$build_dir/tools/wine_prefix/install_driver.exe" \
        "$(unix_to_windows "$OZDK_WORK_DIR/test-printer.ppd")" \
        "$(unix_to_windows "$build_dir/ozdkrnui.dll")"
}
