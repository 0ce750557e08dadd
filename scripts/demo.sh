#!/usr/bin/env bash
# Builds the program and runs the main job on the data shipped in examples/.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh
need_packages g++ cmake ninja-build libncurses-dev python3

cmake --preset release -DZEB_TESTS=OFF -DZEB_BENCH=OFF -B build/demo >/dev/null
cmake --build build/demo --target zeb -- -j "$(nproc)"
zeb=$PWD/build/demo/zeb
cd examples
echo '$ zeb proc demo.run, quit,'
"$zeb" proc demo.run, quit, </dev/null 2>&1
