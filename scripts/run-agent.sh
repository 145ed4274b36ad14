#!/usr/bin/env bash
# Runs Debian's snmpd in the foreground on a loopback port with libsnmpdAPI
# loaded over the simulated switch.
#
#   scripts/run-agent.sh [--fresh] [--scenario FILE] [--port N] [--debug]
#                        [--v3-user NAME:AUTHPASS:PRIVPASS] [--v3-rwuser NAME:AUTHPASS:PRIVPASS]
#                        [--agentx] [--host-mibs]
#
# The switch's state lives in $SWSIM_STATE (default: build/run/switch.state)
# and survives restarts; --fresh recreates it from the scenario.  --v3-user
# and --v3-rwuser add an SNMPv3 user (SHA and AES; pass phrases of 8 or more
# characters) that reads, or also writes the switch.  --agentx accepts AgentX
# subagents on build/run/agentx.  --host-mibs keeps snmpd's MIBs of the host
# it runs on (host resources, UCD, TCP/UDP, the IP tables).
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$top/build}
port=${SNMP_PORT:-16161}
scenario=$top/scenarios/default.json
fresh=0
debug=()
conf_options=()
v3_example=
modules=$top/conf/snmpd-modules
while [ $# -gt 0 ]; do
  case "$1" in
    --fresh) fresh=1 ;;
    --scenario) scenario=$2; shift ;;
    --port) port=$2; shift ;;
    --debug) debug=(-Dscalars,trace) ;;
    --v3-user|--v3-rwuser) conf_options+=("$1" "${2:-}"); v3_example=${v3_example:-${2%%:*}}; shift ;;
    --agentx) conf_options+=(--agentx) ;;
    --host-mibs) modules=$top/conf/snmpd-builtins-off ;;
    -h|--help) sed -n '2,14p' "$0"; exit 0 ;;
    *) echo "run-agent: unknown option $1" >&2; exit 2 ;;
  esac
  shift
done

"$top/scripts/install-deps.sh"
"$top/scripts/build.sh" "$build"

rundir=$build/run
mkdir -p "$rundir"
export SWSIM_STATE=${SWSIM_STATE:-$rundir/switch.state}
if [ "$fresh" = 1 ] || [ ! -f "$SWSIM_STATE" ]; then
  "$build/swctl" --state "$SWSIM_STATE" create "$scenario" --force
fi

# The configuration may hold SNMPv3 pass phrases: only our user reads it.
(umask 077 && "$top/scripts/make-snmpd-conf.sh" "${conf_options[@]}" \
   "$build/libsnmpdAPI.so" "$port" "$rundir" > "$rundir/snmpd.conf")

cat <<TXT
Agent on udp:127.0.0.1:$port, switch state $SWSIM_STATE
  read:   snmpwalk -v2c -c public -On -m '' 127.0.0.1:$port 1.3.6.1.2.1.1
  names:  snmpwalk -v2c -c public -M +$top/mib:$top/mib/base -m SWITCH-MIB 127.0.0.1:$port 1.3.6.1.4.1.99999
  write:  snmpset -v2c -c private -m '' 127.0.0.1:$port 1.3.6.1.2.1.1.5.0 s core-sw-1
TXT
if [ -n "$v3_example" ]; then
  echo "  v3:     snmpget -v3 -l authPriv -u $v3_example -a SHA -A AUTHPASS -x AES -X PRIVPASS -On -m '' 127.0.0.1:$port 1.3.6.1.2.1.1.5.0"
fi
cat <<TXT
  switch: $build/swctl --state $SWSIM_STATE --help
Stop with Ctrl-C.
TXT
export MIBS=
# snmpd starts only its SNMP engine's modules (conf/snmpd-modules); with
# --host-mibs all of them but those that would hold the OIDs the module
# serves (conf/snmpd-builtins-off).
exec snmpd -f -Lo -C -c "$rundir/snmpd.conf" -p "$rundir/snmpd.pid" "${debug[@]}" $(cat "$modules")
