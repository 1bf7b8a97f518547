#!/usr/bin/env bash
# The main job: set up, build, create the demo company in a SQLite database,
# and run a scripted session of calls against it, showing what a form sees.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
build_dir=${KAVRIN_BUILD_DIR:-build}
kavrin="$build_dir/tools/kavrin/kavrin"
db="$build_dir/demo.db"

"$kavrin" --version
rm -f "$db"
"$kavrin" init-db "$db" --demo
echo
echo "A form's session on $db (request, then the component's answer):"
while IFS= read -r request; do
  [ -n "$request" ] || continue
  echo
  echo "> $request"
  printf '%s\n' "$request" | "$kavrin" shell --db "$db" --trace | sed 's/^/< /'
done < examples/demo-session.jsonl
