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
NATIVE_PACKAGES=(clang libclang-rt-14-dev g++)
SCREENSHOT_PACKAGES=(x11-apps imagemagick)
