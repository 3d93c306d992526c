#!/usr/bin/env bash
# Builds ozdkrnui.dll as it ships into $BUILD_DIR/release: optimised, statically linked,
# its debug information moved to ozdkrnui.dll.debug beside it (the DLL keeps a
# .gnu_debuglink to that file). Checks the DLL with cmake/CheckShippedDll.cmake (system
# imports only, no debug sections, the link) and prints both files' sizes.
#
# Environment: BUILD_DIR (default ./build).
set -uo pipefail
source "$(dirname "$0")/lib/common.sh"
ensure_packages "${BUILD_PACKAGES[@]}" || exit 1

release="$BUILD_DIR/release"
cmake -S "$OZDK_ROOT" -B "$release" -G Ninja \
    -DCMAKE_TOOLCHAIN_FILE="$OZDK_ROOT/cmake/mingw-w64-x86_64.cmake" \
    -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null || exit 1
cmake --build "$release" --target ozdkrnui -- -j"$(nproc)" || exit 1
cmake -DDLL="$release/ozdkrnui.dll" \
    -DOBJDUMP="$(sed -n 's/^CMAKE_OBJDUMP:FILEPATH=//p' "$release/CMakeCache.txt")" \
    -DOBJCOPY="$(sed -n 's/^CMAKE_OBJCOPY:FILEPATH=//p' "$release/CMakeCache.txt")" \
    -P "$OZDK_ROOT/cmake/CheckShippedDll.cmake" || exit 1
for file in ozdkrnui.dll ozdkrnui.dll.debug; do
    printf '%-20s %9d bytes\n' "$file" "$(stat -c %s "$release/$file")"
done
