#!/usr/bin/env bash
# Writes an snmpd.conf for the module to stdout (conf/snmpd.conf.in filled in):
#
#   make-snmpd-conf.sh [--agentx] [--v3-user NAME:AUTHPASS:PRIVPASS]...
#                      [--v3-rwuser NAME:AUTHPASS:PRIVPASS]...
#                      MODULE_PATH PORT RUN_DIR [RO_COMMUNITY RW_COMMUNITY]
#
# RUN_DIR holds snmpd's persistent state and, with --agentx, the AgentX
# socket.  --v3-user adds an SNMPv3 user that reads, --v3-rwuser one that
# also writes the switch; both authenticate with SHA and encrypt with AES,
# pass phrases of at least 8 characters without blanks, quotes or
# backslashes.  The file holds the pass phrases: keep it private.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)

die() { echo "make-snmpd-conf: $*" >&2; exit 2; }

agentx= users=
add_user() {  # add_user GROUP NAME:AUTHPASS:PRIVPASS
  local name auth priv phrase='^[^[:space:]"\\'\'']{8,}$'
  IFS=: read -r name auth priv <<<"$2"
  [[ $name =~ ^[A-Za-z0-9._-]+$ ]] || die "bad SNMPv3 user name in '$2'"
  [[ $auth =~ $phrase && $priv =~ $phrase ]] ||
    die "user $name: pass phrases need 8 or more characters, no blanks, quotes or backslashes"
  users+="createUser $name SHA \"$auth\" AES \"$priv\""$'\n'"group $1 usm $name"$'\n'
}
while [ $# -gt 0 ]; do
  case "$1" in
    --agentx) agentx="master agentx" ;;
    --v3-user) [ $# -ge 2 ] || die "$1 needs NAME:AUTHPASS:PRIVPASS"; add_user v3readers "$2"; shift ;;
    --v3-rwuser) [ $# -ge 2 ] || die "$1 needs NAME:AUTHPASS:PRIVPASS"; add_user v3writers "$2"; shift ;;
    -*) die "unknown option $1" ;;
    *) break ;;
  esac
  shift
done
[ $# -eq 3 ] || [ $# -eq 5 ] || die "usage: make-snmpd-conf.sh [options] MODULE_PATH PORT RUN_DIR [RO_COMMUNITY RW_COMMUNITY]"

# The switch's subtrees: the OID of every scalar and table of the module's
# catalogues (and of the tables with hand-written handlers), cut to the arc of the MIB module that holds it (one arc below
# mib-2, transmission, an enterprise or an IEEE 802 MIB node; below ip, one
# arc per group, since snmpd's own IP objects live beside the switch's).
# Objects under none of these nodes keep their own OID.
switch_view() {
  awk '
    BEGIN {
      arcs["1.3.6.1.2.1"] = 7; arcs["1.3.6.1.2.1.10"] = 8; arcs["1.3.6.1.2.1.4"] = 8
      arcs["1.3.6.1.4.1"] = 7; arcs["1.0.8802.1.1"] = 6; arcs["1.2.840.10006.300"] = 6
    }
    /^(SCALAR|TABLE|HAND_TABLE)\(/ {
      sub(/\)[ \t]*$/, "")
      n = split($0, field, ",")
      for (k = 1; k <= n; ++k) gsub(/[ \t]/, "", field[k])
      for (first = n; first > 1 && field[first - 1] ~ /^[0-9]+$/; --first) {}
      oid = field[first]
      for (k = first + 1; k <= n; ++k) oid = oid "." field[k]
      best = 0
      for (node in arcs) {
        m = split(node, arc, ".")
        if (m <= best || index(oid ".", node ".") != 1) continue
        best = m; last = first + arcs[node] - 1
      }
      if (best && last < n) {
        oid = field[first]
        for (k = first + 1; k <= last; ++k) oid = oid "." field[k]
      }
      if (!(oid in seen)) { seen[oid]; print oid }
    }' "$top/scalars/catalogue.def" "$top/tables/catalogue.def" "$top/mibs/routing/hand_tables.def" | sort -V | sed 's/^/view  switch  included  /'
}

MODULE=$1 PORT=$2 RUN_DIR=$3 RO_COMMUNITY=${4:-public} RW_COMMUNITY=${5:-private} \
AGENTX=$agentx V3_USERS=${users%$'\n'} SWITCH_VIEW=$(switch_view) \
awk '{
  line = $0
  while (match(line, /@[A-Z0-9_]+@/)) {
    printf "%s%s", substr(line, 1, RSTART - 1), ENVIRON[substr(line, RSTART + 1, RLENGTH - 2)]
    line = substr(line, RSTART + RLENGTH)
  }
  print line
}' "$top/conf/snmpd.conf.in"
