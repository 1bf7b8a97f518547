#!/usr/bin/env bash
# The benchmark: sets up and builds, generates suite databases of 1,000,
# 100,000 and 1,000,000 items (once: they are kept in build/bench-data),
# starts a PostgreSQL server on loopback (as the tests do) and copies each
# suite into it, runs a session on each engine and size in a process of its
# own (answers checked, first calls, statements per call, peak memory), times
# every case at every engine and size side by side, through the kit and
# straight through the engine, prints the summary and writes it as JSON to
# build/bench-data/summary.json. Options go to kavrin-bench run, e.g.
# --sizes 1000,100000 --repetitions 15 --min-time 0.1 --out FILE.json.
# KAVRIN_BENCH_SERVER=0 runs on SQLite only.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
build_dir=${KAVRIN_BUILD_DIR:-build}
data_dir="$build_dir/bench-data"
server=()
if [ "${KAVRIN_BENCH_SERVER:-1}" != 0 ]; then
  state="$data_dir/postgres-server.state"
  mkdir -p "$data_dir"
  tests/postgres/server.sh start "$state"
  trap 'tests/postgres/server.sh stop "$state"' EXIT
  server=(--server "$state")
fi
"$build_dir/bench/kavrin-bench" run --dir "$data_dir" "${server[@]}" \
  --out "$data_dir/summary.json" "$@"
