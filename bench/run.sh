#!/usr/bin/env bash
# Walk speed of the agent on the largest switch (scenarios/max.json: 8 units
# of 64 ports, 128 trunks, 4094 VLANs, 12,000 routes, 9,000 LSAs), each
# table against a reference table with the same rows and columns (the route
# and LSA tables' indexes as as many INTEGER sub-identifiers), served in the
# same agent by net-snmp's table-data helper with no per-request work
# (bench/reference_table.c).
#
#   bench/run.sh [REPETITIONS]        (default 5)
#   BENCH_TABLES="ifStackTable portTable" bench/run.sh   (only those tables,
#                                                         no whole-tree walk)
#
# Builds a Release tree in build-bench/ (BENCH_BUILD_DIR to change it), starts
# snmpd on a free loopback port with libsnmpdAPI, measures the shape of each
# table below, restarts it with one reference table per shape, then times
# `snmpbulkwalk -v2c -Cr25 -On` of each table and of its reference, and of the
# whole tree the agent serves (1.3.6.1.2.1, the IEEE 802.3ad MIB under
# 1.2.840.10006.300.43, and 1.3.6.1.4.1.99999 less the
# reference subtree).  It prints varbinds per second and, per table, the ratio
# of its time per varbind to its reference's (target: at most 1.3), and the
# same for all the tables together, then the cost of one table refresh in
# process (bench/refresh_bench.cpp).  The agent
# and its temporary files are removed on exit.
set -euo pipefail

top=$(cd "$(dirname "$0")/.." && pwd)
build=${BENCH_BUILD_DIR:-$top/build-bench}
reps=${1:-5}
scenario=$top/scenarios/max.json

# The tables walked, by name and OID.
subjects=(
  "portTable 1.3.6.1.4.1.99999.3.5.201.1.2.1"
  "ifTable 1.3.6.1.2.1.2.2"
  "ifXTable 1.3.6.1.2.1.31.1.1"
  "ifStackTable 1.3.6.1.2.1.31.1.2"
  "dot3StatsTable 1.3.6.1.2.1.10.7.2"
  "dot3adAggPortTable 1.2.840.10006.300.43.1.2.1"
  "queuePortTable 1.3.6.1.4.1.99999.3.5.201.1.27.1"
  "trunkTable 1.3.6.1.4.1.99999.3.5.201.1.3.3"
  "ddTransceiversTable 1.3.6.1.4.1.99999.3.5.201.1.28.1"
  "rateLimitPortTable 1.3.6.1.4.1.99999.3.5.201.1.16.1"
  "bcastStormTable 1.3.6.1.4.1.99999.3.5.201.1.11.1"
  "lacpPortTable 1.3.6.1.4.1.99999.3.5.201.1.4.1"
  "dot3adAggTable 1.2.840.10006.300.43.1.1.1"
  "dot3adAggPortStatsTable 1.2.840.10006.300.43.1.2.2"
  "dot3adAggPortDebugTable 1.2.840.10006.300.43.1.2.3"
  "dot1qVlanStaticTable 1.3.6.1.2.1.17.7.1.4.3"
  "dot1qVlanCurrentTable 1.3.6.1.2.1.17.7.1.4.2"
  "dot1qPortVlanTable 1.3.6.1.2.1.17.7.1.4.5"
  "vlanTable 1.3.6.1.4.1.99999.3.5.201.1.12.1"
  "dot1dStpPortTable 1.3.6.1.2.1.17.2.15"
  "entPhysicalTable 1.3.6.1.2.1.47.1.1.1"
  "entPhysicalContainsTable 1.3.6.1.2.1.47.1.3.3"
  "entAliasMappingTable 1.3.6.1.2.1.47.1.3.2"
  "switchInfoTable 1.3.6.1.4.1.99999.3.5.201.1.1.2"
  "switchIndivFanTable 1.3.6.1.4.1.99999.3.5.201.1.1.5"
  "switchMacAddrUsageTable 1.3.6.1.4.1.99999.3.5.201.1.1.12"
  "cpuActiveUsageTable 1.3.6.1.4.1.99999.3.5.201.1.26.1"
  "etherStatsTable 1.3.6.1.2.1.16.1.1"
  "historyControlTable 1.3.6.1.2.1.16.2.1"
  "lldpRemTable 1.0.8802.1.1.2.1.4.1"
  "lldpRemManAddrTable 1.0.8802.1.1.2.1.4.2"
  "lldpRemUnknownTLVTable 1.0.8802.1.1.2.1.4.3"
  "lldpLocPortTable 1.0.8802.1.1.2.1.3.7"
  "lldpStatsRxPortTable 1.0.8802.1.1.2.1.2.7"
  "lldpPortConfigTable 1.0.8802.1.1.2.1.1.6"
  "ipCidrRouteTable 1.3.6.1.2.1.4.24.4"
  "inetCidrRouteTable 1.3.6.1.2.1.4.24.7"
  "ospfLsdbTable 1.3.6.1.2.1.14.4"
  "ospfExtLsdbTable 1.3.6.1.2.1.14.12"
)
if [ -n "${BENCH_TABLES:-}" ]; then
  chosen=()
  for s in "${subjects[@]}"; do
    case " $BENCH_TABLES " in *" ${s%% *} "*) chosen+=("$s") ;; esac
  done
  [ ${#chosen[@]} -gt 0 ] || { echo "BENCH_TABLES: no table of this benchmark named" >&2; exit 2; }
  subjects=("${chosen[@]}")
fi
reference=1.3.6.1.4.1.99999.999
private=1.3.6.1.4.1.99999

say() { printf '%s\n' "$*" >&2; }

# ---- build -------------------------------------------------------------------
say "building (Release) in $build"
cmake -S "$top" -B "$build" -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build "$build" -j2 --target snmpdAPI swctl refresh_bench >/dev/null
if cmake --build "$build" -j2 --target reference_table >/dev/null 2>&1; then
  reference_so=$(find "$build" -name libreference_table.so -type f | head -n1)
else
  # bench/ is not part of the project build: build the module on its own.
  cmake -S "$top/bench" -B "$build/bench-reference" -DCMAKE_BUILD_TYPE=Release >/dev/null
  cmake --build "$build/bench-reference" >/dev/null
  reference_so=$build/bench-reference/libreference_table.so
fi
module=$build/libsnmpdAPI.so
swctl=$(find "$build" -name swctl -type f -perm -u+x | head -n1)
[ -f "$module" ] && [ -f "$reference_so" ] && [ -n "$swctl" ] || { say "build products missing"; exit 1; }

# ---- agent -------------------------------------------------------------------
tmp=$(mktemp -d /tmp/switch-bench-XXXXXX)
agent_pid=
stop_agent() {
  if [ -n "$agent_pid" ] && kill -0 "$agent_pid" 2>/dev/null; then
    kill "$agent_pid" 2>/dev/null || true
    for _ in $(seq 50); do kill -0 "$agent_pid" 2>/dev/null || break; sleep 0.1; done
    kill -9 "$agent_pid" 2>/dev/null || true
    wait "$agent_pid" 2>/dev/null || true
  fi
  agent_pid=
}
cleanup() { stop_agent; rm -rf "$tmp"; }
trap cleanup EXIT
trap 'exit 130' INT TERM

export SWSIM_STATE=$tmp/switch.state
"$swctl" --state "$SWSIM_STATE" create "$scenario" >/dev/null

port=
snmp_opts=()
answers() { snmpget -v2c -c public -On -m '' -t 0.2 -r 0 "127.0.0.1:$port" 1.3.6.1.2.1.1.3.0 >/dev/null 2>&1; }
start_agent() {  # start_agent REFERENCE_SHAPES
  for _ in 1 2 3; do
    port=$((20000 + RANDOM % 40000))
    if command -v ss >/dev/null && [ -n "$(ss -Hlun "sport = :$port" 2>/dev/null)" ]; then continue; fi
    { "$top/scripts/make-snmpd-conf.sh" "$module" "$port" "$tmp"
      echo "dlmod reference_table $reference_so"; } > "$tmp/snmpd.conf"
    # shellcheck disable=SC2046
    REFTABLES=$1 MIBS= \
      snmpd -f -Lo -C -c "$tmp/snmpd.conf" -p "$tmp/snmpd.pid" $(cat "$top/conf/snmpd-modules") \
      >>"$tmp/snmpd.log" 2>&1 &
    agent_pid=$!
    for _ in $(seq 100); do
      kill -0 "$agent_pid" 2>/dev/null || break
      if answers; then snmp_opts=(-v2c -c public -On -m '' -t 10 -r 0 "127.0.0.1:$port"); return 0; fi
    done
    stop_agent
  done
  say "snmpd did not start; its log:"; cat "$tmp/snmpd.log" >&2; exit 1
}

start_agent ""

# shape OID: the rows of a table, the length of its row indexes in
# sub-identifiers and the type of each column, as the reference module reads
# them ("ROWSxINDEXES:TYPE/TYPE/...", bench/reference_table.c), from one walk
# of the table.  A column's octet strings are taken as long as its first
# row's value.
shape() {
  snmpbulkwalk "${snmp_opts[@]}" -Cr25 "$1" 2>/dev/null | awk -v entry=".$1.1." '
    function close_value() { if (hex != "") { code[hex] = "h" bytes; hex = "" } }
    /^\./ {
      close_value()
      if (index($1, entry) != 1) next
      cell = substr($1, length(entry) + 1)
      column = cell; sub(/\..*/, "", column)
      row = cell; sub(/^[0-9]+\./, "", row)
      if (!(row in rows)) { subids = split(row, parts, ".") }
      rows[row]
      if (column in code) next
      order[++columns] = column
      type = $3
      if (type == "STRING:") { text = $0; sub(/^[^=]*= STRING: /, "", text); code[column] = "s" (length(text) - 2) }
      else if (type == "Hex-STRING:") { hex = column; bytes = NF - 3 }
      else if (type == "Counter32:") code[column] = "c"
      else if (type == "Gauge32:") code[column] = "g"
      else if (type == "Timeticks:") code[column] = "t"
      else if (type == "Counter64:") code[column] = "C"
      else if (type == "OID:") code[column] = "o"
      else code[column] = "i"
      next
    }
    hex != "" { bytes += NF }
    END {
      close_value()
      printf "%dx%d", length(rows), subids
      for (k = 1; k <= columns; ++k) printf "%s%s", k == 1 ? ":" : "/", code[order[k]]
      printf "\n"
    }'
}
shapes=()
for s in "${subjects[@]}"; do
  read -r name oid <<<"$s"
  shapes+=("$(shape "$oid")")
  case ${shapes[-1]} in 0*) say "$name shows no row: agent log:"; cat "$tmp/snmpd.log" >&2; exit 1 ;; esac
done
stop_agent
start_agent "${shapes[*]}"
say "agent on udp:127.0.0.1:$port; tables (rows:column types):"
for k in "${!subjects[@]}"; do say "  ${subjects[$k]%% *} ${shapes[$k]}"; done

# ---- measurements ------------------------------------------------------------
now_ns() { date +%s%N; }

# walk_roots OID...: walks each root in turn; prints "varbinds nanoseconds".
walk_roots() {
  local total=0 t0 t1 n
  : > "$tmp/walk.out"
  t0=$(now_ns)
  for root in "$@"; do snmpbulkwalk "${snmp_opts[@]}" -Cr25 "$root" >> "$tmp/walk.out" 2>/dev/null; done
  t1=$(now_ns)
  n=$(grep -c '^\.' "$tmp/walk.out" || true)
  total=$((t1 - t0))
  echo "$n $total"
}

# The top-level arcs under 1.3.6.1.4.1.99999 that hold objects, but the
# reference table's.
private_roots() {
  local next=$private arc
  while :; do
    next=$(snmpgetnext "${snmp_opts[@]}" "$next" 2>/dev/null | awk 'NR == 1 {print $1}')
    case "$next" in
      ."$private".*) ;;
      *) break ;;
    esac
    arc=$(echo "${next#.$private.}" | cut -d. -f1)
    [ "$arc" = 999 ] || echo "$private.$arc"
    next=$private.$((arc + 1))
  done
}

declare -A label roots median_ns count samples
keys=()
for k in "${!subjects[@]}"; do
  read -r name oid <<<"${subjects[$k]}"
  label[t$k]=$name; roots[t$k]=$oid
  label[r$k]="  its reference"; roots[r$k]=$reference.$((k + 1))
  keys+=("t$k" "r$k")
done
if [ -z "${BENCH_TABLES:-}" ]; then
  mapfile -t whole < <(echo 1.3.6.1.2.1; echo 1.2.840.10006.300.43; private_roots)
  label[whole]="whole tree (${whole[*]})"; roots[whole]="${whole[*]}"
  keys+=(whole)
fi

# Walks alternate between the subjects so that a change in the machine's load
# falls on all of them alike.
for key in "${keys[@]}"; do
  # shellcheck disable=SC2086
  walk_roots ${roots[$key]} >/dev/null  # warm-up
done
for _ in $(seq "$reps"); do
  for key in "${keys[@]}"; do
    # shellcheck disable=SC2086
    read -r n ns < <(walk_roots ${roots[$key]})
    count[$key]=$n
    samples[$key]+="$ns "
  done
done
met=yes over=
subject_ns=0 reference_ns=0
for key in "${keys[@]}"; do
  # shellcheck disable=SC2086
  sorted=$(printf '%s\n' ${samples[$key]} | sort -n)
  median_ns[$key]=$(echo "$sorted" | awk '{a[NR]=$1} END {print a[int((NR+1)/2)]}')
  best=$(echo "$sorted" | head -n1)
  n=${count[$key]}
  ratio=
  if [[ $key == r* ]]; then
    t=t${key#r}
    ratio=$(awk -v p="${median_ns[$t]}" -v r="${median_ns[$key]}" -v pn="${count[$t]}" -v rn="$n" \
      'BEGIN { printf "%.2f", (p / pn) / (r / rn) }')
    awk -v r="$ratio" 'BEGIN { exit !(r > 1.3) }' && { met=no; over+=" ${label[$t]} $ratio"; }
    subject_ns=$((subject_ns + median_ns[$t])) reference_ns=$((reference_ns + median_ns[$key]))
  fi
  awk -v l="${label[$key]}" -v n="$n" -v m="${median_ns[$key]}" -v b="$best" -v r="$reps" -v q="$ratio" 'BEGIN {
    printf "%-28s %6d varbinds  median %8.3f s  best %8.3f s  %9.0f varbinds/s", l, n, m / 1e9, b / 1e9, n / (m / 1e9)
    if (q != "") printf "  table/reference %s", q
    printf "\n" }'
done
echo "time per varbind of each table within 1.3 times its reference's: $met${over:+ (over:$over)}"
# The tables walked one after the other against their references walked the
# same way (each reference has its table's varbinds, so times compare).
awk -v s="$subject_ns" -v r="$reference_ns" 'BEGIN {
  printf "all the tables above together: %.3f s against %.3f s for their references, %.2f times\n", s / 1e9, r / 1e9, s / r }'
echo

# The share of the walk that the per-request population takes, without the
# network: nanoseconds per refresh of the per-port tables, in process.
stop_agent
"$build/bench/refresh_bench" "$scenario" 2>/dev/null
