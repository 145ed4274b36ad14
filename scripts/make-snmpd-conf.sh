#!/usr/bin/env bash
# Writes an snmpd.conf for the module to stdout:
#   make-snmpd-conf.sh MODULE_PATH PORT [RO_COMMUNITY RW_COMMUNITY]
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
module=$1 port=$2 ro=${3:-public} rw=${4:-private}
sed -e "s|@PORT@|$port|" -e "s|@RO_COMMUNITY@|$ro|" -e "s|@RW_COMMUNITY@|$rw|" \
    -e "s|@MODULE@|$module|" "$top/conf/snmpd.conf.in"
