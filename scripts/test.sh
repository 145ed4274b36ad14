#!/usr/bin/env bash
# Runs every test: installs what is missing (apt, as root), builds the project
# twice (normal, and with AddressSanitizer + UndefinedBehaviorSanitizer) and
# runs the whole ctest suite in each build; then builds for the 32-bit
# targets and tests there (scripts/cross-test.sh: big-endian PowerPC under
# qemu-user, 32-bit x86 natively).
#
#   scripts/test.sh [--no-sanitize] [--no-cross]
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
sanitize=1 cross=1
for option in "$@"; do
  case "$option" in
    --no-sanitize) sanitize=0 ;;
    --no-cross) cross=0 ;;
    *) echo "test.sh: unknown option $option" >&2; exit 2 ;;
  esac
done

"$top/scripts/install-deps.sh"

timings=()
timed() {  # timed NAME COMMAND...: runs it and notes how long it took
  local name=$1 start=$SECONDS; shift
  "$@"
  timings+=("$(printf '%-10s %4d s' "$name" $((SECONDS - start)))")
}
run_suite() {
  local build=$1; shift
  echo "== build $build $*"
  "$top/scripts/build.sh" "$build" "$@"
  echo "== test $build"
  (cd "$build" && ctest --output-on-failure -j2 --timeout 600)
}

timed native run_suite "$top/build"
if [ "$sanitize" = 1 ]; then
  BUILD_TYPE=Debug timed sanitize run_suite "$top/build-sanitize" -DSWITCH_SANITIZE=ON
fi
if [ "$cross" = 1 ]; then
  timed ppc "$top/scripts/cross-test.sh" ppc
  timed i686 "$top/scripts/cross-test.sh" i686
fi
echo "== time taken"
printf '%s\n' "${timings[@]}"
