#!/usr/bin/env bash
# Installs what is missing, builds and runs every test.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
bash scripts/build.sh "$@"
BUILD_DIR="${BUILD_DIR:-build}"
ctest --test-dir "$BUILD_DIR" --output-on-failure --timeout 300
