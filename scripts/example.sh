#!/usr/bin/env bash
# Installs the built library into a temporary prefix, builds the example host
# program against it with find_package(Kavrin), and runs it on a demo
# database: proof that the installed package is usable as it stands.
set -euo pipefail
cd "$(dirname "$0")/.."
build_dir=${KAVRIN_BUILD_DIR:-build}
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT

cmake --install "$build_dir" --prefix "$prefix" > /dev/null
cmake -S examples/form-host -B "$prefix/example-build" -G Ninja \
  -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_BUILD_TYPE=Release > /dev/null
cmake --build "$prefix/example-build" > /dev/null
"$prefix/bin/kavrin" init-db "$prefix/demo.db" --demo > /dev/null
output=$(LD_LIBRARY_PATH="$prefix/lib:$prefix/lib64:${LD_LIBRARY_PATH:-}" "$prefix/example-build/form-host" "$prefix/demo.db")
echo "$output"
# The example's own answers on the demo company.
grep -q "^name: *刨花板 18mm$" <<< "$output"
grep -q "^unit price: *86.50$" <<< "$output"
grep -q "^failed call: *error -2147217900" <<< "$output"
echo "example: the installed package builds and runs the example host"
