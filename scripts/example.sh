#!/usr/bin/env bash
# Proves the installed package usable as it stands, for both kinds of library:
# the build's own (shared) and a static one built beside it in BUILD/static.
# Each is installed into a temporary prefix; there the example host is built
# with find_package(Kavrin) and again with nothing but
# `pkg-config --cflags --libs kavrin`, and every build runs on a demo database.
# Neither build names a C++ standard: the package supplies it.
set -eEuo pipefail
trap 'echo "example: failed at line $LINENO: $BASH_COMMAND" >&2' ERR
cd "$(dirname "$0")/.."
source scripts/example-answers.sh
build_dir=${KAVRIN_BUILD_DIR:-build}
static_dir=$build_dir/static
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The static library: only what the package installs, tool left out (the
# shared build's tool makes the demo database).
if [ ! -f "$static_dir/build.ninja" ]; then
  cmake -S . -B "$static_dir" -G Ninja -DBUILD_SHARED_LIBS=OFF \
    -DKAVRIN_BUILD_TESTS=OFF -DKAVRIN_BUILD_TOOLS=OFF -DKAVRIN_BUILD_BENCH=OFF > /dev/null
fi
cmake --build "$static_dir" > /dev/null

"$build_dir/tools/kavrin/kavrin" init-db "$work/demo.db" --demo > /dev/null

for kind in shared static; do
  if [ "$kind" = shared ]; then from=$build_dir; else from=$static_dir; fi
  prefix=$work/$kind
  cmake --install "$from" --prefix "$prefix" > /dev/null
  libdir=$(dirname "$(dirname "$(find "$prefix" -name kavrin.pc)")")

  cmake -S examples/form-host -B "$prefix/example-build" -G Ninja \
    -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_BUILD_TYPE=Release > /dev/null
  cmake --build "$prefix/example-build" > /dev/null
  # shellcheck disable=SC2046 # pkg-config's flags are meant to split
  c++ -O1 -o "$prefix/form-host-pc" examples/form-host/main.cpp \
    $(PKG_CONFIG_PATH="$libdir/pkgconfig" pkg-config --cflags --libs kavrin)

  for program in "$prefix/example-build/form-host" "$prefix/form-host-pc"; do
    linked=$(LD_LIBRARY_PATH="$libdir" ldd "$program" | grep -c libkavrin || true)
    if [ "$kind" = shared ] && [ "$linked" -eq 0 ]; then
      echo "example: $program does not load libkavrin.so" >&2; exit 1
    fi
    if [ "$kind" = static ] && [ "$linked" -ne 0 ]; then
      echo "example: $program loads libkavrin.so, not the static library" >&2; exit 1
    fi
    LD_LIBRARY_PATH="$libdir" check_example "$program" "$work/demo.db"
  done
  echo "example: the installed $kind library builds and runs the example host (CMake and pkg-config)"
done
