#!/usr/bin/env bash
# Makes the Debian package from the build (cpack -G DEB), checks the runtime
# libraries it depends on, installs it on this machine with dpkg, builds the
# example host against the installed files alone (CMake and pkg-config), runs
# it and the installed tool, and removes the package again, also when a step
# fails. Needs root or sudo; leaves an already installed kavrin package alone.
set -eEuo pipefail
trap 'echo "package: failed at line $LINENO: $BASH_COMMAND" >&2' ERR
cd "$(dirname "$0")/.."
source scripts/example-answers.sh
build_dir=${KAVRIN_BUILD_DIR:-build}
sudo_cmd=()
[ "$(id -u)" -eq 0 ] || sudo_cmd=(sudo)

if dpkg-query -W -f='${Status}' kavrin 2> /dev/null | grep -q "installed"; then
  echo "package: a kavrin package is already installed on this machine; not touching it" >&2
  exit 1
fi

work=$(mktemp -d)
installed=0
cleanup() {
  if [ "$installed" = 1 ] && dpkg-query -W kavrin > /dev/null 2>&1; then
    "${sudo_cmd[@]}" dpkg --purge kavrin > /dev/null || echo "package: could not remove kavrin" >&2
  fi
  rm -rf "$work"
}
trap cleanup EXIT
trap 'exit 130' INT TERM

if ! (cd "$build_dir" && cpack -G DEB -B "$work/cpack") > "$work/cpack.log" 2>&1; then
  cat "$work/cpack.log" >&2
  exit 1
fi
deb=$(find "$work/cpack" -maxdepth 1 -name 'kavrin_*.deb')
depends=$(dpkg-deb -f "$deb" Depends)
echo "package: $(basename "$deb"), $(du -k "$deb" | cut -f1) kB, depends on: $depends"
for library in libsqlite3-0 libicu libodbc2 libstdc++6; do
  if ! grep -q "$library" <<< "$depends"; then
    echo "package: the package does not declare its dependency on $library" >&2
    exit 1
  fi
done

installed=1
"${sudo_cmd[@]}" dpkg -i "$deb" > /dev/null

# From here on nothing of the build or the source tree but the example's
# source is used: the installed CMake package, kavrin.pc, /usr/bin/kavrin.
unset PKG_CONFIG_PATH CMAKE_PREFIX_PATH LD_LIBRARY_PATH
cmake -S examples/form-host -B "$work/example-build" -G Ninja -DCMAKE_BUILD_TYPE=Release > /dev/null
grep -q "^Kavrin_DIR:PATH=/usr/lib" "$work/example-build/CMakeCache.txt"
cmake --build "$work/example-build" > /dev/null
[ "$(pkg-config --variable=pcfiledir kavrin)" = /usr/lib/pkgconfig ]
# shellcheck disable=SC2046 # pkg-config's flags are meant to split
c++ -O1 -o "$work/form-host-pc" examples/form-host/main.cpp $(pkg-config --cflags --libs kavrin)

kavrin=$(command -v kavrin)
[ "$kavrin" = /usr/bin/kavrin ]
kavrin init-db "$work/demo.db" --demo > /dev/null
for program in "$work/example-build/form-host" "$work/form-host-pc"; do
  libraries=$(ldd "$program")
  if ! grep -Eq "libkavrin\.so\.1 => (/usr)?/lib/libkavrin" <<< "$libraries"; then
    printf '%s\n' "$libraries" >&2
    echo "package: $program does not load the installed libkavrin" >&2
    exit 1
  fi
  check_example "$program" "$work/demo.db"
done
answer=$(kavrin call --db "$work/demo.db" CodeToName 010101 0)
grep -q "刨花板 18mm" <<< "$answer"

echo "package: installed, built and ran the example and the kavrin tool, removed again"
