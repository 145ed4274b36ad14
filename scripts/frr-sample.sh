#!/usr/bin/env bash
# Makes tests/data/frr-*.json, the FRRouting output that `swctl routing
# import-frr` is tested on, from real FRR daemons (Debian's frr package):
# two routers in network namespaces of their own, joined by a veth pair.
#
#   r1: vlan10 10.10.0.1/24 (to r2), vlan20 10.20.0.1/24 (a LAN);
#       static 172.16.0.0/16 via 10.10.0.2, blackhole 10.99.0.0/16;
#       OSPF area 0 on both.
#   r2: vlan10 10.10.0.2/24, lan30 10.30.0.1/24 and lan31 10.31.0.1/24
#       (LANs) in OSPF area 0.
#
# Once r1 has r2 as a full neighbour and r2's networks as OSPF routes, r1's
# `show ip route json` and `show ip ospf neighbor json` are written to
# OUTDIR (default tests/data).  Needs root; removes its namespaces and
# daemons on exit.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
[ -x /usr/lib/frr/zebra ] || { echo "frr-sample: needs Debian's frr package (apt-get install frr)" >&2; exit 1; }
out=${1:-$top/tests/data}
tmp=$(mktemp -d /tmp/frr-sample-XXXXXX)
chmod 755 "$tmp"

cleanup() {
  for ns in r1 r2; do
    for pid in "$tmp"/$ns/*.pid; do [ -f "$pid" ] && kill "$(cat "$pid")" 2>/dev/null || true; done
    ip netns del "$ns" 2>/dev/null || true
  done
  rm -rf "$tmp" /var/run/frr/r1 /var/run/frr/r2
}
trap cleanup EXIT

ip netns add r1
ip netns add r2
ip link add vlan10 netns r1 type veth peer name vlan10 netns r2
# The LANs are veth pairs with both ends at home (no dummy devices needed).
ip -n r1 link add vlan20 type veth peer name vlan20p
ip -n r2 link add lan30 type veth peer name lan30p
ip -n r2 link add lan31 type veth peer name lan31p
ip -n r1 addr add 10.10.0.1/24 dev vlan10
ip -n r1 addr add 10.20.0.1/24 dev vlan20
ip -n r2 addr add 10.10.0.2/24 dev vlan10
ip -n r2 addr add 10.30.0.1/24 dev lan30
ip -n r2 addr add 10.31.0.1/24 dev lan31
for ns in r1 r2; do
  for dev in lo vlan10 vlan20 vlan20p lan30 lan30p lan31 lan31p; do ip -n $ns link set $dev up 2>/dev/null || true; done
done

conf() {  # conf NS ROUTER_ID EXTRA
  cat <<CONF
hostname $1
log file $tmp/$1/frr.log
!
interface vlan10
 ip ospf hello-interval 1
 ip ospf dead-interval 4
!
$3
router ospf
 ospf router-id $2
 network 10.0.0.0/8 area 0.0.0.0
!
CONF
}
mkdir -p "$tmp/r1" "$tmp/r2"
conf r1 1.1.1.1 "ip route 172.16.0.0/16 10.10.0.2
ip route 10.99.0.0/16 blackhole" > "$tmp/r1/frr.conf"
conf r2 2.2.2.2 "" > "$tmp/r2/frr.conf"
chown -R frr:frr "$tmp"

for ns in r1 r2; do
  mkdir -p /var/run/frr/$ns && chown frr:frr /var/run/frr/$ns
  for d in zebra staticd ospfd; do
    ip netns exec $ns /usr/lib/frr/$d -d -N $ns -f "$tmp/$ns/frr.conf" -i "$tmp/$ns/$d.pid" >/dev/null
  done
done

vty() { ip netns exec r1 vtysh -N r1 -c "$1"; }
for _ in $(seq 60); do
  if vty 'show ip ospf neighbor json' | grep -q '"Full' && vty 'show ip route json' | grep -q '10.31.0.0/24'; then
    break
  fi
  sleep 1
done
vty 'show ip route json' > "$out/frr-routes.json"
vty 'show ip ospf neighbor json' > "$out/frr-ospf-neighbors.json"
dpkg-query -W -f='frr ${Version}\n' frr > "$out/frr-version.txt"
echo "wrote $out/frr-routes.json, $out/frr-ospf-neighbors.json"
