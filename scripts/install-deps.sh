#!/usr/bin/env bash
# Installs what building, running and testing the agent need on a fresh
# Debian machine, and the packages named as arguments (the cross builds' own:
# scripts/cross-deps.sh).  Needs root for apt; does nothing when all is present.
set -euo pipefail

packages=(
  build-essential cmake pkg-config ccache
  snmpd snmp libsnmp-dev snmptrapd   # the agent, its tools and headers
  libssl-dev                         # MD5 of the configuration image
  libgtest-dev googletest            # unit and integration tests
  nlohmann-json3-dev libcli11-dev    # scenarios and the control tool
  smitools                           # smilint for the private MIB text
  lldpd iproute2                     # a real LLDP peer in network namespaces (LLDP tests)
  tftpd-hpa                          # a real TFTP server on a loopback port (TFTP tests)
  python3
  "$@"
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

if [ "$(id -u)" -ne 0 ]; then
  echo "install-deps: missing packages: ${missing[*]} (run as root to install them)" >&2
  exit 1
fi
export DEBIAN_FRONTEND=noninteractive
apt-get update -qq
apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
# The snmpd package may start a system agent on port 161; ours runs on its own
# loopback port and does not need it.
