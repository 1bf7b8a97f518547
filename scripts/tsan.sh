#!/usr/bin/env bash
# Builds the threads test with Clang under ThreadSanitizer and runs it: eight
# objects on eight threads against one database, the UI host swapped under
# them. Any data race fails the run. Needs the packages of scripts/setup.sh.
set -euo pipefail
cd "$(dirname "$0")/.."
build_dir=${KAVRIN_TSAN_BUILD_DIR:-build-tsan}
if [ ! -f "$build_dir/build.ninja" ]; then
  CC=clang CXX=clang++ cmake -S . -B "$build_dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O1 -gline-tables-only" \
    -DKAVRIN_SANITIZE=thread -DKAVRIN_BUILD_TOOLS=OFF
fi
cmake --build "$build_dir" --target kavrin_threads_test
export TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1
ctest --test-dir "$build_dir" -R '^Threads\.' --output-on-failure --timeout 600
