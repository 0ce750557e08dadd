#!/usr/bin/env bash
# Checks the source tree without building it: format, floors and circles, homes of functions, owners of
# state, words, and what documents name. Usage: scripts/check.sh [--lint | --lint-all]
# With --lint the sources changed since the branch left main go through clang-tidy as well; with --lint-all
# all do, with more checks, and what passed is remembered in build/lint.json.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh
lint=no
case "${1:-}" in
  --lint) lint=changed ;;
  --lint-all) lint=all ;;
  "") ;;
  *) echo "usage: scripts/check.sh [--lint | --lint-all]" >&2; exit 2 ;;
esac
need_packages python3
want_packages clang-format
[ $lint = no ] || want_packages clang-tidy g++ cmake ninja-build libgtest-dev libbenchmark-dev "${libraries[@]}"

bad=0
for check in layers homes ownership; do
  echo "== $check"
  python3 tests/checks/$check.py src || bad=1
done
for check in words documents; do
  echo "== $check"
  python3 tests/checks/$check.py . || bad=1
done

echo "== format"
if command -v clang-format >/dev/null 2>&1; then
  find src tests bench -name '*.h' -o -name '*.cpp' | xargs clang-format --dry-run -Werror || bad=1
else
  echo "clang-format isn't installed: the format isn't checked"
fi

if [ $lint != no ]; then
  echo "== lint"
  if command -v clang-tidy >/dev/null 2>&1; then
    cmake --preset release >/dev/null
    python3 scripts/lint.py build/release build/lint.json $lint || bad=1
  else
    echo "clang-tidy isn't installed: nothing is linted"
  fi
fi
[ $bad = 0 ] && echo "all checks pass"
exit $bad
