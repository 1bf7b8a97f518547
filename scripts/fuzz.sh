#!/usr/bin/env bash
# Runs every libFuzzer target for a bounded time, starting from its committed
# seeds, in the sanitized build of scripts/sanitize.sh (built when missing).
# A crash, a leak, a sanitizer report or a broken invariant fails the run and
# leaves the input that did it in build-asan/fuzz-work/TARGET/.
# Usage: scripts/fuzz.sh [SECONDS_PER_TARGET]   (default 20; two run at once)
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-${KAVRIN_FUZZ_SECONDS:-20}}
build_dir=${KAVRIN_ASAN_BUILD_DIR:-build-asan}
scripts/sanitize.sh --build-only >/dev/null

export ASAN_OPTIONS=detect_leaks=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
targets=(convert date format sepcode criteria request invoke lexer)

run_one() {
  local target=$1 work="$build_dir/fuzz-work/$1"
  rm -rf "$work" && mkdir -p "$work/corpus"
  local dict=()
  [ -f "fuzz/dict/$target.dict" ] && dict=(-dict="fuzz/dict/$target.dict")
  # Standard input is closed off: no input may make a target wait on it. An
  # input may hold four calls, each of which the engine lets run 30 seconds
  # before it interrupts the statement; only past that is it a hang.
  local start=$SECONDS verdict=FAILED
  if "$build_dir/fuzz/fuzz_$target" -max_total_time="$seconds" -timeout=125 -rss_limit_mb=4096 \
      -print_final_stats=1 -artifact_prefix="$work/" "${dict[@]}" \
      "$work/corpus" "fuzz/corpus/$target" </dev/null >"$work/log" 2>&1; then
    verdict=ok
  fi
  echo "$verdict" >"$work/verdict"
  printf 'fuzz: %-9s %-6s in %3d s\n' "$target" "$verdict" $((SECONDS - start))
}
export -f run_one
export build_dir seconds

echo "fuzz: ${#targets[@]} targets, $seconds s each, $(nproc) at a time"
printf '%s\n' "${targets[@]}" | xargs -P "$(nproc)" -I{} bash -c 'run_one {}'
status=0
printf '%-9s %12s %8s %10s\n' target executions seconds "exec/s"
for target in "${targets[@]}"; do
  log="$build_dir/fuzz-work/$target/log"
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -1)
  took=$(sed -n 's/^Done [0-9]* runs in \([0-9]*\) second.*/\1/p' "$log" | tail -1)
  rate=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$log" | tail -1)
  printf '%-9s %12s %8s %10s\n' "$target" "${runs:-?}" "${took:-?}" "${rate:-?}"
  if [ "$(cat "$build_dir/fuzz-work/$target/verdict" 2>/dev/null)" != ok ]; then
    status=1
    echo "--- $target failed; the input is in $build_dir/fuzz-work/$target/" >&2
    tail -n 60 "$log" >&2
  fi
done
exit $status
