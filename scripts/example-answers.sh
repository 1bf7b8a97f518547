# shellcheck shell=bash
# Sourced by scripts/example.sh and scripts/package.sh: runs a build of the
# example host (examples/form-host) on a demo database and checks its answers
# on the demo company. Usage: check_example PROGRAM DATABASE
check_example() {
  local output answer
  output=$("$1" "$2")
  for answer in "^name: *刨花板 18mm$" "^unit price: *86.50$" "^failed call: *error -2147217900"; do
    if ! grep -q "$answer" <<< "$output"; then
      printf '%s\n%s: no line matches %s\n' "$output" "$1" "$answer" >&2
      return 1
    fi
  done
}
