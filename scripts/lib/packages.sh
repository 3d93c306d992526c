# ensure_packages PKG...: installs the Debian packages that are missing (once).
ensure_packages() {
    local missing=()
    local package
    for package in "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed" || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    echo "Installing: ${missing[*]}"
    local sudo=""
    [ "$(id -u)" -ne 0 ] && sudo="sudo"
    $sudo apt-get update -qq
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

BUILD_PACKAGES=(g++-mingw-w64-x86-64-posix mingw-w64-x86-64-dev cmake ninja-build googletest)
WINE_PACKAGES=(wine64 xvfb xauth)
# Names that Debian 12 and 13 both have. clang and libclang-rt-dev come from the same
# source and pull in the same LLVM version (14 on Debian 12, 19 on Debian 13), so the
# sanitizer and fuzzer runtimes always match the compiler run-native-core.sh finds.
NATIVE_PACKAGES=(clang libclang-rt-dev g++)
SCREENSHOT_PACKAGES=(x11-apps imagemagick)
