#!/usr/bin/env bash
# Installs the Debian packages the project needs (only those missing), then
# configures and builds into build/. Safe to run again: quick when nothing
# changed. Package installation is logged to build/setup-packages.log.
# Usage: scripts/setup.sh [--demo] [extra cmake -D options]
#   --demo  only what the library and the kavrin tool need, and only those
#           are built; without it, what the tests, the benchmark, the
#           sanitizers and fuzzing need too, and everything is built.
set -euo pipefail
cd "$(dirname "$0")/.."

# The library and the kavrin tool.
demo_packages=(
  g++
  cmake
  ninja-build
  libsqlite3-dev
  libicu-dev
  nlohmann-json3-dev
)
# The tests (also on a PostgreSQL server through ODBC), the README's
# examples, the benchmark, the sanitizers and fuzzing.
test_packages=(
  clang
  libclang-rt-14-dev
  pkg-config
  sqlite3
  python3
  python3-pytest
  mono-devel
  dpkg-dev
  file
  unixodbc-dev
  odbc-postgresql
  postgresql
  libgtest-dev
  libgmock-dev
  libbenchmark-dev
)

mode=full
if [ "${1:-}" = --demo ]; then
  mode=demo
  shift
fi
packages=("${demo_packages[@]}")
[ "$mode" = demo ] || packages+=("${test_packages[@]}")
build_dir=${KAVRIN_BUILD_DIR:-build}

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done
if [ ${#missing[@]} -gt 0 ]; then
  mkdir -p "$build_dir"
  log="$build_dir/setup-packages.log"
  echo "setup: installing ${missing[*]} (and what they need); the log is $log"
  sudo_cmd=()
  [ "$(id -u)" -eq 0 ] || sudo_cmd=(sudo)
  if ! { "${sudo_cmd[@]}" apt-get update -qq &&
    DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -qq \
      --no-install-recommends "${missing[@]}"; } >"$log" 2>&1; then
    echo "setup: installing the packages failed; the end of $log:" >&2
    tail -n 30 "$log" >&2
    exit 1
  fi
fi

# The tests, benchmark and ODBC driver are built when what they need is
# installed; a full setup asks for them, also in a build the demo configured.
options=("$@")
if [ "$mode" = full ]; then
  cache="$build_dir/CMakeCache.txt"
  if [ ! -f "$cache" ] || grep -Eq '^KAVRIN_(BUILD_TESTS|BUILD_BENCH|WITH_ODBC):BOOL=OFF' "$cache"; then
    options+=(-DKAVRIN_BUILD_TESTS=ON -DKAVRIN_BUILD_BENCH=ON -DKAVRIN_WITH_ODBC=ON)
  fi
fi
if [ ! -f "$build_dir/build.ninja" ]; then
  cmake -S . -B "$build_dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "${options[@]}"
elif [ ${#options[@]} -gt 0 ]; then
  cmake -S . -B "$build_dir" "${options[@]}"
fi
if [ "$mode" = demo ]; then
  cmake --build "$build_dir" --target kavrin_cli
else
  cmake --build "$build_dir"
fi
