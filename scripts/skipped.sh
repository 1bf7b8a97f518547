#!/usr/bin/env bash
# Says which tests the last ctest run skipped and why: the message each
# skipped test gave (GTEST_SKIP), read from ctest's log of the run, one line
# per test.
# Usage: scripts/skipped.sh [BUILD_DIR]
set -euo pipefail
cd "$(dirname "$0")/.."
log="${1:-${KAVRIN_BUILD_DIR:-build}}/Testing/Temporary/LastTest.log"
[ -f "$log" ] || exit 0
skipped=$(awk '
  /^[0-9]+\/[0-9]+ Testing: / { name = $0; sub(/^[0-9]+\/[0-9]+ Testing: /, "", name)
                               skipped = 0; reason = ""; next_is_reason = 0; next }
  next_is_reason { reason = $0; next_is_reason = 0 }
  / Skipped$/ { next_is_reason = 1 }
  /^\[  SKIPPED \] / { skipped = 1 }
  /^"[^"]*" end time:/ {
    if (skipped) print "  " name ": " (reason == "" ? "no reason given" : reason)
    skipped = 0
  }
' "$log" | sort)
[ -n "$skipped" ] || exit 0
echo "$(wc -l <<<"$skipped") tests skipped, and why:"
echo "$skipped"
