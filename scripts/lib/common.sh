# What every command of scripts/ starts with: the repository root, the build folder
# (BUILD_DIR, default ./build, made absolute) and the shared functions.
OZDK_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
export OZDK_ROOT
BUILD_DIR=${BUILD_DIR:-$OZDK_ROOT/build}
mkdir -p "$BUILD_DIR"
BUILD_DIR=$(cd "$BUILD_DIR" && pwd)
export BUILD_DIR

source "$OZDK_ROOT/scripts/lib/packages.sh"
source "$OZDK_ROOT/scripts/lib/wine-session.sh"
source "$OZDK_ROOT/scripts/lib/build.sh"
