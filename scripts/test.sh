#!/usr/bin/env bash
# Builds everything and runs all tests. Usage: scripts/test.sh [release|debug|sanitize]
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh
need_packages g++ cmake ninja-build libgtest-dev libbenchmark-dev "${libraries[@]}" python3
want_packages "${transports[@]}"

preset=${1:-release}
jobs=$(nproc)
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset" -- -j "$jobs"
ctest --preset "$preset" -j "$jobs"
