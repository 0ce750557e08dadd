#!/usr/bin/env bash
# Builds the static program and packs it: build/static/zeb_VERSION_amd64.deb and an archive of the same files.
# What is in the package is then run in an empty folder that has nothing else of this machine.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh
need_packages g++ cmake ninja-build "${libraries[@]}" python3

cmake --preset static -DZEB_TESTS=OFF >/dev/null
cmake --build --preset static -- -j "$(nproc)"
cd build/static
rm -f zeb_*.deb zeb-*.tar.gz
cpack -G DEB >/dev/null
cpack -G TGZ >/dev/null

bare=$PWD/bare
rm -rf "$bare"
mkdir "$bare"
dpkg-deb -x zeb_*.deb "$bare"
cp "$bare"/usr/share/doc/zeb/examples/beetles.* "$bare"
unshare --user --map-root-user --root="$bare" --wd=/ /usr/bin/zeb proc beetles.run, quit, </dev/null >bare.log 2>&1 || {
  cat bare.log
  exit 1
}
grep -q "17 trees, best score 121" bare.log
ls -l "$PWD"/zeb_*.deb "$PWD"/zeb-*.tar.gz
