#!/usr/bin/env bash
# The main job: set up, build, create the demo company in a SQLite database,
# and run a scripted session of calls against it, showing what a form sees.
# Installs only what the library and the kavrin tool need (scripts/test.sh
# installs the rest).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh --demo
build_dir=${KAVRIN_BUILD_DIR:-build}
kavrin="$build_dir/tools/kavrin/kavrin"
db="$build_dir/demo.db"

"$kavrin" --version
"$kavrin" init-db "$db" --demo --force
echo
echo "A form's session on $db, on one clsPub object (request, then the component's answer):"
session=examples/demo-session.jsonl
mapfile -t answers < <(grep -v -e '^#' -e '^$' "$session" | "$kavrin" shell --db "$db" --trace)
n=0
while IFS= read -r line; do
  case "$line" in
    "") ;;
    "#"*) echo; echo "${line#\# }" ;;
    *) echo "  > $line"; echo "  < ${answers[$n]}"; n=$((n + 1)) ;;
  esac
done < "$session"
