#!/usr/bin/env bash
# Soak of the RMON engine's clear-all: the agent on scenarios/default.json
# (its ports carry traffic), the engine asked for clear-all again and again
# (each one walks the agent over its loop-back SNMP session) while a manager
# walks the RMON and interface tables, for SECONDS (default 180).  Prints the
# agent's resident memory before and after, the growth per clear-all, and
# how many clear-alls failed.
#
#   bench/rmon_soak.sh [SECONDS]
#
# Uses the normal build in build/ (BUILD_DIR to change it); the agent and
# its temporary files are removed on exit.
set -euo pipefail

top=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$top/build}
seconds=${1:-180}
say() { printf '%s\n' "$*" >&2; }

cmake --build "$build" -j2 --target snmpdAPI swctl >/dev/null
module=$build/libsnmpdAPI.so
swctl=$(find "$build" -name swctl -type f -perm -u+x | head -n1)
[ -f "$module" ] && [ -n "$swctl" ] || { say "build products missing"; exit 1; }

tmp=$(mktemp -d /tmp/rmon-soak-XXXXXX)
agent_pid=
cleanup() {
  if [ -n "$agent_pid" ]; then kill "$agent_pid" 2>/dev/null || true; wait "$agent_pid" 2>/dev/null || true; fi
  rm -rf "$tmp"
}
trap cleanup EXIT
trap 'exit 130' INT TERM

export SWSIM_STATE=$tmp/switch.state
"$swctl" create "$top/scenarios/default.json" >/dev/null

port=$((20000 + RANDOM % 40000))
"$top/scripts/make-snmpd-conf.sh" "$module" "$port" "$tmp" > "$tmp/snmpd.conf"
# shellcheck disable=SC2046
MIBS= snmpd -f -Lo -C -c "$tmp/snmpd.conf" -p "$tmp/snmpd.pid" $(cat "$top/conf/snmpd-modules") >"$tmp/snmpd.log" 2>&1 &
agent_pid=$!
snmp=(-v2c -c public -On -m '' -t 5 -r 1 "127.0.0.1:$port")
for _ in $(seq 100); do snmpget "${snmp[@]}" 1.3.6.1.2.1.1.3.0 >/dev/null 2>&1 && break; sleep 0.1; done

rss() { awk '/^VmRSS/ {print $2}' "/proc/$agent_pid/status"; }
# A first round, so that what every later clear-all allocates is warm.
"$swctl" rmon clear-all >/dev/null
snmpbulkwalk "${snmp[@]}" -Cr25 1.3.6.1.2.1.16 >/dev/null
before=$(rss)
say "agent pid $agent_pid on udp:127.0.0.1:$port, RSS before: ${before} kB; soaking ${seconds} s"

end=$((SECONDS + seconds)) rounds=0 failed=0
( while [ $SECONDS -lt $end ]; do
    snmpbulkwalk "${snmp[@]}" -Cr25 1.3.6.1.2.1.16 >/dev/null 2>&1
    snmpbulkwalk "${snmp[@]}" -Cr25 1.3.6.1.2.1.2.2 >/dev/null 2>&1
  done ) &
walker=$!
while [ $SECONDS -lt $end ]; do
  "$swctl" rmon clear-all >/dev/null 2>&1 || failed=$((failed + 1))
  rounds=$((rounds + 1))
done
wait "$walker" || true
after=$(rss)

echo "clear-all rounds:  $rounds ($failed failed)"
echo "agent RSS before:  ${before} kB"
echo "agent RSS after:   ${after} kB"
awk -v b="$before" -v a="$after" -v n="$rounds" \
  'BEGIN { printf "growth:            %d kB, %.1f bytes per clear-all\n", a - b, n ? (a - b) * 1024 / n : 0 }'
