#!/usr/bin/env bash
# Checks the metrics of kovactl and of kova-exporter with promtool on every shipped machine, and
# once through the real chains: textfile collector of a node_exporter, and kova-exporter itself,
# both scraped by a Prometheus, asked for a value that the program has read. All on loopback.
#   scripts/metrics_check.sh BUILD_DIR
set -euo pipefail
# shellcheck source=scripts/common.sh
. "$(dirname "$0")/common.sh"
build=${1:?usage: scripts/metrics_check.sh BUILD_DIR}
kovactl=$build/tools/kovactl/kovactl
kova_exporter=$build/tools/exporter/kova-exporter
machines=$repository/simulator/machines

make_work_folder

free_port() {
  python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])'
}
ask() {
  python3 -c 'import sys, urllib.request as u; print(u.urlopen(sys.argv[1], timeout=5).read().decode())' "$1"
}
# Repeats a command for up to 30 seconds, until it succeeds.
eventually() {
  for _ in $(seq 150); do
    "$@" >/dev/null 2>&1 && return
    sleep 0.2
  done
  echo "metrics_check.sh: gave up on: $*" >&2
  cat "$work"/*.log >&2
  return 1
}

# start_exporter LOG OPTIONS...: its address is then in $address.
start_exporter() {
  local log=$1
  shift
  "$kova_exporter" --web.listen-address 127.0.0.1:0 "$@" 2>"$log" &
  started+=($!)
  eventually grep -q 'listening on' "$log"
  address=$(sed -n 's/.*listening on //p' "$log")
}
has_swept() {
  ask "$address/metrics" | grep '^kova_sweeps_total [1-9]'
}

# A machine with reads that fail exits 1 and still prints what could be read.
for machine in "$machines"/*.json; do
  name=$(basename "$machine" .json)
  "$kovactl" --simulate "$machine" metrics >"$work/$name.prom" 2>/dev/null || [ $? -eq 1 ]
  promtool check metrics <"$work/$name.prom"
  start_exporter "$work/$name.log" --simulate "$machine"
  eventually has_swept
  ask "$address/metrics" | promtool check metrics
done

mkdir "$work/textfile"
"$kovactl" --simulate metrics --output "$work/textfile/kova.prom"
exporter_port=$(free_port)
prometheus-node-exporter --collector.disable-defaults --collector.textfile \
  --collector.textfile.directory="$work/textfile" --web.listen-address="127.0.0.1:$exporter_port" \
  >"$work/exporter.log" 2>&1 &
started+=($!)
start_exporter "$work/kova.log" --simulate --interval 1s
prometheus_port=$(free_port)
cat >"$work/prometheus.yml" <<EOF
scrape_configs:
  - job_name: kova
    scrape_interval: 1s
    static_configs: [{targets: ["127.0.0.1:$exporter_port", "${address#http://}"]}]
EOF
prometheus --config.file="$work/prometheus.yml" --storage.tsdb.path="$work/data" \
  --web.listen-address="127.0.0.1:$prometheus_port" >"$work/prometheus.log" 2>&1 &
started+=($!)

# The design voltage of the simulated battery does not move: 11.1 V, from both.
answer_is_the_reading() {
  ask "http://127.0.0.1:$prometheus_port/api/v1/query?query=kova_voltage_volts%7Bid%3D%220x14190500%22%7D" |
    python3 -c '
import json, sys
result = json.load(sys.stdin)["data"]["result"]
assert [r["value"][1] for r in result] == ["11.1", "11.1"], result
assert {r["metric"]["family"] for r in result} == {"SMART BATTERY"}, result'
}
eventually answer_is_the_reading
scrape_has_no_error() {
  ask "http://127.0.0.1:$exporter_port/metrics" | grep -x 'node_textfile_scrape_error 0'
}
eventually scrape_has_no_error
