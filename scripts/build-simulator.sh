#!/usr/bin/env bash
# Builds the embosser simulator as a native Linux program:
#   $BUILD_DIR/native-tools/embosser_simulator   (BUILD_DIR defaults to ./build)
set -euo pipefail
OZDK_ROOT=$(cd "$(dirname "$0")/.." && pwd)
BUILD_DIR=${BUILD_DIR:-$OZDK_ROOT/build}
out="$BUILD_DIR/native-tools"
mkdir -p "$out"
src="$OZDK_ROOT/tools/embosser_simulator"
${CXX:-g++} -std=c++17 -O2 -Wall -Wextra -pthread \
    -o "$out/embosser_simulator" "$src/embosser_simulator.cpp" "$src/main.cpp"
echo "$out/embosser_simulator"
