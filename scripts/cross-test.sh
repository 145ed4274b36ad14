#!/usr/bin/env bash
# Builds the project for another architecture and runs its tests there:
#
#   scripts/cross-test.sh ppc|i686 [BUILD_DIR]
#
#   ppc   32-bit big-endian PowerPC: the core (index model, port lists, record
#         codecs, catalogues and row keys, accessors), the simulated platform
#         and swctl, with the unit and simulator tests run under qemu-user.
#   i686  32-bit little-endian x86: everything, the module and its net-snmp
#         edge included, built against Debian's i386 net-snmp; the whole
#         suite runs natively, the integration tests with Debian's i386 snmpd
#         hosting the 32-bit module.
#
# Installs what it needs first (scripts/cross-deps.sh).  BUILD_DIR defaults to
# build-ARCH; BUILD_TYPE as for scripts/build.sh.  Compiles through ccache.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
arch=${1:-}
case "$arch" in
  ppc)  triple=powerpc-linux-gnu ;;
  i686) triple=i686-linux-gnu ;;
  *) echo "usage: cross-test.sh ppc|i686 [BUILD_DIR]" >&2; exit 2 ;;
esac
build=${2:-$top/build-$arch}

root=$("$top/scripts/cross-deps.sh" "$arch")
launcher=()
if command -v ccache >/dev/null; then
  launcher=(-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
  # Hits across clones of the project (CI builds a fresh one each time).
  export CCACHE_BASEDIR=$top CCACHE_NOHASHDIR=true
fi

# The native build's optimisation (and so its warnings), without debug
# information (with it a file takes 1.5 to 1.8 times as long to compile here).
flags=(-DCMAKE_BUILD_TYPE=RelWithDebInfo "-DCMAKE_C_FLAGS_RELWITHDEBINFO=-O2 -DNDEBUG"
       "-DCMAKE_CXX_FLAGS_RELWITHDEBINFO=-O2 -DNDEBUG")
[ -z "${BUILD_TYPE:-}" ] || flags=(-DCMAKE_BUILD_TYPE="$BUILD_TYPE")

echo "== build $build ($triple)"
cmake -S "$top" -B "$build" -DCMAKE_TOOLCHAIN_FILE="$top/cmake/toolchains/$triple.cmake" \
      -DSWITCH_TARGET_ROOT="$root" "${flags[@]}" "${launcher[@]}" >/dev/null
cmake --build "$build" -j"$(nproc)"

echo "== test $build ($triple)"
cd "$build" && ctest --output-on-failure -j2 --timeout 600
