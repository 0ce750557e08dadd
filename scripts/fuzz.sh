#!/usr/bin/env bash
# Builds the fuzz targets with Clang and runs each for a while, two minutes by default.
# Usage: scripts/fuzz.sh [SECONDS [TARGET...]]; a target is a name in tests/fuzz without "_fuzz.cpp".
# Inputs that led somewhere new are kept in build/fuzz/corpus and tried first the next time; an input that
# fails is kept in build/fuzz/failed, and `build/fuzz/tests/fuzz/fuzz_TARGET FILE` runs it again.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/packages.sh

seconds=${1:-120}
case $seconds in
  *[!0-9]* | "") echo "usage: scripts/fuzz.sh [SECONDS [TARGET...]]" >&2; exit 2 ;;
esac
[ $# = 0 ] || shift
want_packages clang cmake ninja-build "${libraries[@]}"
if ! echo 'extern "C" int LLVMFuzzerTestOneInput(const char*, unsigned long) { return 0; }' |
  clang++ -x c++ -fsanitize=fuzzer,address,undefined - -o /dev/null 2>/dev/null; then
  echo "Fuzzing needs Clang with its fuzzer and sanitizers: install the packages clang and libclang-rt-dev (on" >&2
  echo "Debian 12: clang and libclang-rt-14-dev), or the compiler-rt of your system." >&2
  exit 1
fi
targets=("$@")
[ $# -gt 0 ] || targets=($(cd tests/fuzz && ls ./*_fuzz.cpp | sed 's|./\(.*\)_fuzz.cpp|\1|'))

cmake --preset fuzz >/dev/null
cmake --build --preset fuzz --target "${targets[@]/#/fuzz_}" -- -j "$(nproc)"
here=$PWD/build/fuzz # targets go to a folder of their own
mkdir -p "$here/failed"
failed=()
for target in "${targets[@]}"; do
  echo "== $target, $seconds seconds"
  mkdir -p "$here/corpus/$target"
  log=$here/$target.log
  if "$here/tests/fuzz/fuzz_$target" -max_total_time="$seconds" -timeout=20 -rss_limit_mb=4096 \
    -artifact_prefix="$here/failed/$target-" "$here/corpus/$target" >"$log" 2>&1; then
    tail -1 "$log"
  else
    failed+=("$target")
    tail -40 "$log"
  fi
done
[ ${#failed[@]} = 0 ] || { echo "failed: ${failed[*]}; the inputs are in build/fuzz/failed" >&2; exit 1; }
echo "nothing failed"
