#!/usr/bin/env bash
# Line and branch coverage of src/ and host/ by the whole test suite. Builds into build-coverage/ (or $BUILD_DIR)
# with gcc's --coverage, runs every test, prints the summary and writes coverage.json (per line and branch, to
# compare two runs) and coverage.html into the build folder. Extra arguments go to ctest (for example -L unit).
set -euo pipefail
cd "$(dirname "$0")/.."
if ! command -v gcovr >/dev/null; then
    echo "coverage: gcovr is missing (apt-get install gcovr)" >&2
    exit 127
fi
BUILD_DIR="${BUILD_DIR:-build-coverage}"
flags=--coverage
BUILD_DIR="$BUILD_DIR" BUILD_TYPE=Debug bash scripts/build.sh -DCMAKE_CXX_FLAGS="$flags" -DCMAKE_C_FLAGS="$flags" \
    -DCMAKE_EXE_LINKER_FLAGS="$flags" -DCMAKE_SHARED_LINKER_FLAGS="$flags"
find "$BUILD_DIR" -name '*.gcda' -delete
# A failing test still covers what it ran; its failure is reported, and the exit code says so at the end.
status=0
ctest --test-dir "$BUILD_DIR" --output-on-failure --timeout 300 "$@" || status=$?
# Branches that only an exception would take are left out: they are the compiler's, not the code's decisions.
gcovr --root . --object-directory "$BUILD_DIR" --filter "$PWD/src/" --filter "$PWD/host/" \
    --exclude-directories '.*/CMakeFiles/[0-9.]+/.*' --exclude-throw-branches -j "$(nproc)" --print-summary \
    --json "$BUILD_DIR/coverage.json" --html-details "$BUILD_DIR/coverage.html"
exit "$status"
