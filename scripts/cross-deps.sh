#!/usr/bin/env bash
# Prepares what a cross build for one architecture needs:
#
#   scripts/cross-deps.sh ppc|i686
#
# Installs the cross compiler (and qemu-user for PowerPC) with apt, then fills
# the architecture's target root (cmake/toolchains/target-root.cmake), kept
# between runs in $SWITCH_CROSS_CACHE (default ~/.cache/libsnmpdAPI-cross)
# and rebuilt only when a version changes:
#   - googletest, built for the target from Debian's sources (/usr/src/googletest);
#   - ppc: OpenSSL's libcrypto, built for the target from Debian's source
#     package (Debian has no PowerPC packages);
#   - i686: Debian's i386 packages of OpenSSL and net-snmp (snmpd included),
#     with what they need to run, unpacked, not installed.
# Debian's packages for the target are fetched by apt with a private state
# and package lists under the cache: the machine's own apt state, and its list
# of architectures, are left as they are.  Prints the target root.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
arch=${1:-}
case "$arch" in
  ppc)  triple=powerpc-linux-gnu; tools=(g++-powerpc-linux-gnu qemu-user) ;;
  i686) triple=i686-linux-gnu; tools=(g++-i686-linux-gnu) ;;
  *) echo "usage: cross-deps.sh ppc|i686" >&2; exit 2 ;;
esac
"$top/scripts/install-deps.sh" "${tools[@]}" ccache dpkg-dev >&2

cache=${SWITCH_CROSS_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/libsnmpdAPI-cross}
root=$cache/$triple
mkdir -p "$root" "$cache/work"
log=$cache/work/$triple.log
: > "$log"
jobs=$(nproc)

# fresh STAMP TEXT: true if $root/STAMP does not already read TEXT.
fresh() { [ "$(cat "$root/$1" 2>/dev/null)" != "$2" ]; }
# run CMD...: runs a step with its output in the log, shown if it fails.
run() { "$@" >>"$log" 2>&1 || { tail -40 "$log" >&2; echo "cross-deps: failed: $*" >&2; exit 1; }; }

# ---- apt with a private state, for the target's packages and sources ----------
aptdir=$cache/apt
apt_opts=(-o "Dir::State=$aptdir/state" -o "Dir::State::status=$aptdir/state/status"
          -o "Dir::Cache=$aptdir/cache" -o "Dir::Etc::SourceList=$aptdir/sources.list"
          -o "Dir::Etc::SourceParts=$aptdir/sources.list.d" -o Debug::NoLocking=1
          -o APT::Architecture=i386 -o APT::Architectures::=i386 -o APT::Install-Recommends=0
          -o APT::Sandbox::User=root)
apt_private_update() {
  [ -n "$(find "$aptdir/state/lists" -name '*Packages*' -mmin -1440 2>/dev/null | head -1)" ] && return
  mkdir -p "$aptdir/state/lists/partial" "$aptdir/cache/archives/partial" "$aptdir/sources.list.d"
  touch "$aptdir/state/status"
  # The machine's Debian sources, with their source packages too.
  awk '/^deb /{print; sub(/^deb /, "deb-src "); print}' /etc/apt/sources.list 2>/dev/null \
    > "$aptdir/sources.list" || true
  rm -f "$aptdir/sources.list.d/"*
  for f in /etc/apt/sources.list.d/*.sources; do
    [ -f "$f" ] && sed 's/^Types:[[:space:]]*deb[[:space:]]*$/Types: deb deb-src/' "$f" > "$aptdir/sources.list.d/${f##*/}"
  done
  for f in /etc/apt/sources.list.d/*.list; do
    [ -f "$f" ] && awk '/^deb /{print; sub(/^deb /, "deb-src "); print}' "$f" > "$aptdir/sources.list.d/${f##*/}"
  done
  # An index that fails to download (a mirror in sync) leaves the others usable.
  apt-get "${apt_opts[@]}" update >>"$log" 2>&1 || echo "cross-deps: apt update reported errors (see $log)" >&2
}

# ---- googletest --------------------------------------------------------------
gtest_version=$(dpkg-query -W -f='${Version}' googletest)
compiler_version=$("$triple-g++" -dumpfullversion)
if fresh gtest.stamp "$gtest_version $compiler_version"; then
  echo "cross-deps: googletest $gtest_version for $triple" >&2
  rm -rf "$root/gtest" "$cache/work/gtest-$triple"
  run cmake -S /usr/src/googletest -B "$cache/work/gtest-$triple" \
      -DCMAKE_TOOLCHAIN_FILE="$top/cmake/toolchains/$triple.cmake" -DSWITCH_TARGET_ROOT="$root" \
      -DCMAKE_BUILD_TYPE=Release -DBUILD_GMOCK=OFF -DCMAKE_INSTALL_PREFIX="$root/gtest"
  run cmake --build "$cache/work/gtest-$triple" -j"$jobs" --target install
  rm -rf "$cache/work/gtest-$triple"
  echo "$gtest_version $compiler_version" > "$root/gtest.stamp"
fi

# ---- ppc: OpenSSL's libcrypto from Debian's source ---------------------------
if [ "$arch" = ppc ]; then
  apt_private_update
  ssl_version=$(apt-cache "${apt_opts[@]}" showsrc openssl | awk '/^Version:/{print $2}' | sort -V | tail -1)
  if fresh openssl.stamp "$ssl_version $compiler_version"; then
    echo "cross-deps: OpenSSL $ssl_version libcrypto for $triple" >&2
    src=$cache/work/openssl
    rm -rf "$src" && mkdir -p "$src"
    (cd "$src" && run apt-get "${apt_opts[@]}" source --download-only "openssl=$ssl_version")
    run dpkg-source --no-check -x "$src"/openssl_*.dsc "$src/tree"
    # Only what the module uses (the MD5 digest through EVP) and what that
    # needs; no shared library, no assembler, no TLS.
    (cd "$src/tree" && run ./Configure linux-ppc --cross-compile-prefix="$triple-" \
        --prefix="$root" --libdir=lib no-asm no-shared no-tests no-engine no-dso no-module \
        no-legacy no-ui-console no-ssl no-tls no-dtls no-comp no-ct no-ocsp no-ts no-cms \
        no-srp no-srtp no-sock no-async no-deprecated no-aria no-bf no-blake2 no-camellia \
        no-cast no-chacha no-cmac no-des no-dh no-dsa no-ec no-idea no-md4 no-mdc2 no-ocb \
        no-poly1305 no-rc2 no-rc4 no-rmd160 no-scrypt no-seed no-siphash no-siv no-sm2 \
        no-sm3 no-sm4 no-whirlpool no-rfc3779 no-autoload-config &&
      run make -j"$jobs" build_generated && run make -j"$jobs" libcrypto.a)
    rm -rf "$root/include/openssl" && mkdir -p "$root/include" "$root/lib"
    cp -r "$src/tree/include/openssl" "$root/include/"
    cp "$src/tree/libcrypto.a" "$root/lib/"
    rm -rf "$src"
    echo "$ssl_version $compiler_version" > "$root/openssl.stamp"
  fi
fi

# ---- i686: Debian's i386 OpenSSL and net-snmp --------------------------------
if [ "$arch" = i686 ]; then
  apt_private_update
  # What runs (the libraries and snmpd with everything they need), and the
  # development packages whose headers and link names the build uses.
  runtime=(libssl3 libsnmp40 snmpd)
  devel=(libssl-dev libsnmp-dev libsensors-dev libpci-dev libwrap0-dev)
  # name=version of what `apt-get install` would bring in for the given packages.
  resolve() { apt-get "${apt_opts[@]}" install -s "$@" 2>>"$log" | awk '/^Inst /{sub(/^\(/, "", $3); print $2 "=" $3}'; }
  versions=$( (resolve "${runtime[@]}"; resolve "${devel[@]}" | grep -E "^($(IFS='|'; echo "${devel[*]}"))=") | sort -u)
  [ -n "$versions" ] || { tail -20 "$log" >&2; echo "cross-deps: cannot resolve ${runtime[*]} for i386" >&2; exit 1; }
  if fresh sys.stamp "$versions"; then
    echo "cross-deps: Debian i386 packages of OpenSSL and net-snmp" >&2
    debs=$cache/work/debs-$triple
    rm -rf "$debs" "$root/sys" && mkdir -p "$debs" "$root/sys"
    # shellcheck disable=SC2046
    (cd "$debs" && run apt-get "${apt_opts[@]}" download $(echo "$versions"))
    for d in "$debs"/*.deb; do dpkg-deb -x "$d" "$root/sys"; done
    rm -rf "$debs"
    # The headers the build names: OpenSSL's (its configuration header from the
    # i386 folder) and net-snmp's.
    rm -rf "$root/include" && mkdir -p "$root/include"
    cp -r "$root/sys/usr/include/openssl" "$root/sys/usr/include/net-snmp" "$root/include/"
    cp -r "$root/sys/usr/include/i386-linux-gnu/openssl/." "$root/include/openssl/"
    echo "$versions" > "$root/sys.stamp"
  fi
  # Debian's i386 snmpd, run by the cross toolchain's loader over the unpacked
  # libraries (the integration tests start it as their snmpd).
  mkdir -p "$root/bin"
  libs=/usr/$triple/lib:$root/sys/usr/lib/i386-linux-gnu:$root/sys/lib/i386-linux-gnu
  printf '#!/bin/sh\nexec /usr/%s/lib/ld-linux.so.2 --library-path %s %s "$@"\n' \
    "$triple" "$libs" "$root/sys/usr/sbin/snmpd" > "$root/bin/snmpd"
  chmod +x "$root/bin/snmpd"
fi

echo "$root"
