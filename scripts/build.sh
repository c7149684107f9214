#!/usr/bin/env bash
# Configures and builds into build/ (or $BUILD_DIR). Extra arguments go to cmake's configure step. $BUILD_TARGETS,
# when set, names the only targets to build (blank-separated); otherwise everything is built.
set -euo pipefail
cd "$(dirname "$0")/.."
BUILD_DIR="${BUILD_DIR:-build}"
cmake -S . -B "$BUILD_DIR" -G Ninja -DCMAKE_BUILD_TYPE="${BUILD_TYPE:-RelWithDebInfo}" "$@"
targets=()
for target in ${BUILD_TARGETS:-}; do
    targets+=(--target "$target")
done
cmake --build "$BUILD_DIR" --parallel "$(nproc)" "${targets[@]}"
