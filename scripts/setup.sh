#!/usr/bin/env bash
# Installs the Debian packages the project needs (only those missing), then
# configures and builds into build/. Safe to run again: quick when nothing
# changed. Usage: scripts/setup.sh [extra cmake -D options]
set -euo pipefail
cd "$(dirname "$0")/.."

packages=(
  g++ clang libclang-rt-14-dev cmake ninja-build pkg-config
  libsqlite3-dev sqlite3 libicu-dev unixodbc-dev odbc-postgresql postgresql
  libgtest-dev libgmock-dev libbenchmark-dev
  nlohmann-json3-dev dpkg-dev file
  python3 python3-pytest mono-devel
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "setup: installing ${missing[*]}"
  sudo_cmd=()
  [ "$(id -u)" -eq 0 ] || sudo_cmd=(sudo)
  "${sudo_cmd[@]}" apt-get update -qq
  DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

build_dir=${KAVRIN_BUILD_DIR:-build}
if [ ! -f "$build_dir/build.ninja" ]; then
  cmake -S . -B "$build_dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@"
elif [ $# -gt 0 ]; then
  cmake -S . -B "$build_dir" "$@"
fi
cmake --build "$build_dir"
