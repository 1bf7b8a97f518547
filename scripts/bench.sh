#!/usr/bin/env bash
# The benchmark: sets up and builds, generates suite databases of 1,000,
# 100,000 and 1,000,000 items (once: they are kept in build/bench-data), runs a
# session on each size in a process of its own (answers checked, first calls,
# peak memory), times every case at every size through the kit and straight
# through the engine, prints the summary and writes it as JSON to
# build/bench-data/summary.json. Options go to kavrin-bench run, e.g.
# --sizes 1000,100000 --repetitions 15 --min-time 0.1 --out FILE.json.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
build_dir=${KAVRIN_BUILD_DIR:-build}
data_dir="$build_dir/bench-data"
"$build_dir/bench/kavrin-bench" run --dir "$data_dir" --out "$data_dir/summary.json" "$@"
