#!/usr/bin/env bash
# The main job: set up, build, and run the kavrin host on the embedded SQLite
# default.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
build_dir=${KAVRIN_BUILD_DIR:-build}
"$build_dir/tools/kavrin/kavrin" --version
