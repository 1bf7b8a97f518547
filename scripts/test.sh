#!/usr/bin/env bash
# Sets everything up and runs every test: the suite (on SQLite and on a
# PostgreSQL server), the example host, the sanitized suite, fuzzing and the
# ThreadSanitizer run. Each step says when it starts; skipped tests are
# listed with their reasons.
set -euo pipefail
cd "$(dirname "$0")/.."
step() { printf '\n== %s\n' "$*"; }
scripts/setup.sh
build_dir=${KAVRIN_BUILD_DIR:-build}
step "the test suite (ctest)"
status=0
ctest --test-dir "$build_dir" --output-on-failure -j "$(nproc)" --timeout 300 || status=$?
scripts/skipped.sh "$build_dir"
[ "$status" -eq 0 ] || exit "$status"
step "the example host against the installed package (scripts/example.sh)"
scripts/example.sh
step "the Debian package, installed, used and removed (scripts/package.sh)"
scripts/package.sh
step "the suite under AddressSanitizer and UndefinedBehaviorSanitizer (scripts/sanitize.sh)"
scripts/sanitize.sh
step "fuzzing (scripts/fuzz.sh)"
scripts/fuzz.sh
step "threads under ThreadSanitizer (scripts/tsan.sh)"
scripts/tsan.sh
