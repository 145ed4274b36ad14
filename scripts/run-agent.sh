#!/usr/bin/env bash
# Runs Debian's snmpd in the foreground on a loopback port with libsnmpdAPI
# loaded over the simulated switch.
#
#   scripts/run-agent.sh [--fresh] [--scenario FILE] [--port N] [--debug]
#
# The switch's state lives in $SWSIM_STATE (default: build/run/switch.state)
# and survives restarts; --fresh recreates it from the scenario.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$top/build}
port=${SNMP_PORT:-16161}
scenario=$top/scenarios/default.json
fresh=0
debug=()
while [ $# -gt 0 ]; do
  case "$1" in
    --fresh) fresh=1 ;;
    --scenario) scenario=$2; shift ;;
    --port) port=$2; shift ;;
    --debug) debug=(-Dscalars,trace) ;;
    -h|--help) sed -n '2,9p' "$0"; exit 0 ;;
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

"$top/scripts/make-snmpd-conf.sh" "$build/libsnmpdAPI.so" "$port" > "$rundir/snmpd.conf"

cat <<TXT
Agent on udp:127.0.0.1:$port, switch state $SWSIM_STATE
  read:   snmpwalk -v2c -c public -On -m '' 127.0.0.1:$port 1.3.6.1.2.1.1
  names:  snmpwalk -v2c -c public -M +$top/mib:$top/mib/base -m SWITCH-MIB 127.0.0.1:$port 1.3.6.1.4.1.99999
  write:  snmpset -v2c -c private -m '' 127.0.0.1:$port 1.3.6.1.2.1.1.5.0 s core-sw-1
  switch: $build/swctl --state $SWSIM_STATE --help
Stop with Ctrl-C.
TXT
export MIBS=
# snmpd's own system and interfaces groups would hold the OIDs that the module
# serves: leave them out (conf/snmpd-builtins-off).
exec snmpd -f -Lo -C -c "$rundir/snmpd.conf" -p "$rundir/snmpd.pid" "${debug[@]}" \
  $(cat "$top/conf/snmpd-builtins-off")
