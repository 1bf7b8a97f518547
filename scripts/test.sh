#!/usr/bin/env bash
# Sets everything up and runs every test.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
build_dir=${KAVRIN_BUILD_DIR:-build}
ctest --test-dir "$build_dir" --output-on-failure -j "$(nproc)" --timeout 300
scripts/example.sh
scripts/package.sh
scripts/sanitize.sh
scripts/fuzz.sh
scripts/tsan.sh
