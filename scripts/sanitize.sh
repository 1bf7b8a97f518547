#!/usr/bin/env bash
# Builds everything with Clang under AddressSanitizer (leak checking on) and
# UndefinedBehaviorSanitizer, the fuzz targets included, and runs the whole
# suite there; the first report fails the run. Needs the packages of
# scripts/setup.sh. The build directory is kept, so a second run is quick.
# Usage: scripts/sanitize.sh [--build-only]
set -euo pipefail
cd "$(dirname "$0")/.."
build_dir=${KAVRIN_ASAN_BUILD_DIR:-build-asan}
if [ ! -f "$build_dir/build.ninja" ]; then
  CC=clang CXX=clang++ cmake -S . -B "$build_dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O1 -gline-tables-only" \
    -DKAVRIN_SANITIZE=address,undefined -DKAVRIN_BUILD_FUZZERS=ON
fi
cmake --build "$build_dir"
[ "${1:-}" = --build-only ] && exit 0
export ASAN_OPTIONS=detect_leaks=1:detect_stack_use_after_return=1:check_initialization_order=1:strict_init_order=1:strict_string_checks=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
ctest --test-dir "$build_dir" --output-on-failure -j "$(nproc)" --timeout 300
