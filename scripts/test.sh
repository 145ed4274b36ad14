#!/usr/bin/env bash
# Runs every test: installs what is missing (apt, as root), builds the project
# twice (normal, and with AddressSanitizer + UndefinedBehaviorSanitizer) and
# runs the whole ctest suite in each build.
#
#   scripts/test.sh [--no-sanitize]
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
sanitize=1
[ "${1:-}" = "--no-sanitize" ] && sanitize=0

"$top/scripts/install-deps.sh"

run_suite() {
  local build=$1; shift
  echo "== build $build $*"
  "$top/scripts/build.sh" "$build" "$@"
  echo "== test $build"
  (cd "$build" && ctest --output-on-failure -j2 --timeout 600)
}

run_suite "$top/build"
if [ "$sanitize" = 1 ]; then
  BUILD_TYPE=Debug run_suite "$top/build-sanitize" -DSWITCH_SANITIZE=ON
fi
