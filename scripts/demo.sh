#!/usr/bin/env bash
# Builds the program and runs one whole analysis on data shipped in examples/: read, search, consensus,
# trees drawn and written. The results stay in build/demo/results.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh
need_packages g++ cmake ninja-build "${libraries[@]}" python3

cmake --preset release -DZEB_WERROR=OFF -DZEB_TESTS=OFF -DZEB_BENCH=OFF -B build/demo >/dev/null
cmake --build build/demo --target zeb -- -j "$(nproc)"
zeb=$PWD/build/demo/zeb
results=$PWD/build/demo/results
rm -rf "$results"
mkdir -p "$results"
cp examples/beetles.xread examples/beetles.run "$results"
cd "$results"
echo '$ zeb proc beetles.run, quit,'
"$zeb" proc beetles.run, quit, </dev/null 2>&1

cat <<END

The results are in $results:
  beetles.log        all that was said above
  beetles.tre        the shortest trees; "zeb taxname=, proc beetles.xread, proc beetles.tre, tplot 0, quit," shows them
  beetles.svg        the majority rule tree as a figure
  beetles_trees.nex  data and trees for other programs
END
