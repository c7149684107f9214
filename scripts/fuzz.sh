#!/usr/bin/env bash
# Usage: scripts/fuzz.sh [SECONDS]      (SECONDS per target, default 60)
#
# Builds the libFuzzer targets of fuzz/ with clang, AddressSanitizer and UBSan into build-fuzz/ (or
# $FUZZ_BUILD_DIR), and runs each for SECONDS on a corpus seeded from data/ and fuzz/seeds/. Prints the
# executions of each target; a finding stops the script with the target's crash file named.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-60}"
build="${FUZZ_BUILD_DIR:-build-fuzz}"

CC=clang-16 CXX=clang++-16 cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCORVALENT_FUZZ=ON \
    -DCORVALENT_BUILD_TESTS=OFF -DCORVALENT_BUILD_BENCH=OFF >/dev/null
cmake --build "$build" --parallel "$(nproc)" --target fuzz_ini fuzz_request fuzz_collector fuzz_listing

# Seeds: what the program really reads. A request seed is a service file, a NUL, then field texts a line each.
seed() {
    local target="$1"; shift
    mkdir -p "$build/corpus/$target"
    for file in "$@"; do cp -f "$file" "$build/corpus/$target/seed-$(basename "$file" | tr ' ' '_')"; done
}
seed ini data/*.ini data/Presets/*.isf data/Phone.fmt
seed collector fuzz/seeds/collector/*
seed listing fuzz/seeds/listing/*
mkdir -p "$build/corpus/request"
for service in data/Presets/*.isf; do
    { cat "$service"; printf '\0Jean Tremblay\nAcme Ltée\n1500 Rue Peel\nMontréal\nQC\nH3A 1S9\nCanada\n+1 (514) 555-0199\n\n\n'; } \
        >"$build/corpus/request/seed-$(basename "$service" | tr ' ' '_')"
done

export ASAN_OPTIONS="detect_leaks=0:abort_on_error=1" UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
export QT_QPA_PLATFORM=offscreen
mkdir -p "$build/findings"
for target in ini request collector listing; do
    log="$build/fuzz_$target.log"
    if ! "$build/fuzz/fuzz_$target" -max_total_time="$seconds" -print_final_stats=1 -max_len=65536 \
        -artifact_prefix="$build/findings/$target-" "$build/corpus/$target" >"$log" 2>&1; then
        tail -n 40 "$log" >&2
        echo "fuzz: $target found a fault; the input is in $build/findings/" >&2
        exit 1
    fi
    runs="$(grep -m1 'stat::number_of_executed_units' "$log" | awk '{print $2}')"
    echo "fuzz: $target: ${runs:-?} executions in ${seconds}s, no finding"
done
