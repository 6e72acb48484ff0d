#!/usr/bin/env bash
# Loads kova-exporter with wrk on loopback, and node_exporter on the same machine for comparison.
# Prints one line a target: requests a second, latency, size of an answer, resident memory, and how
# many sweeps over the device the load has cost. Wants a quiet machine. Installs what is missing.
#   scripts/exporter_load.sh BUILD_DIR [SECONDS]
set -euo pipefail
# shellcheck source=scripts/common.sh
. "$(dirname "$0")/common.sh"
build=${1:?usage: scripts/exporter_load.sh BUILD_DIR [SECONDS]}
seconds=${2:-10}
scripts/install_dependencies.sh load

make_work_folder

kova_port=19848
node_port=19100
"$build/tools/exporter/kova-exporter" --simulate --interval 5s \
  --web.listen-address "127.0.0.1:$kova_port" 2>"$work/kova.log" &
kova=$!
started+=("$kova")
prometheus-node-exporter --web.listen-address "127.0.0.1:$node_port" >"$work/node.log" 2>&1 &
node=$!
started+=("$node")
sleep 2

# load NAME PROCESS URL CONNECTIONS [ENCODING]
load() {
  local report=$work/report bytes memory
  local header="Accept-Encoding: ${5:-identity}"
  wrk --threads 1 --connections "$4" --duration "${seconds}s" --latency --header "$header" \
    "$3" >"$report"
  bytes=$(curl --silent --header "$header" "$3" | wc --bytes)
  memory=$(awk '/VmRSS/ {print int($2 / 1024 + 0.5)}' "/proc/$2/status")
  awk -v name="$1" -v clients="$4" -v bytes="$bytes" -v memory="$memory" '
    /^ *50%/ {median = $2} /^ *99%/ {worst = $2} /^Requests\/sec/ {rate = $2} /Non-2xx/ {bad = $0}
    END {printf "%-32s %4d %10.0f %10s %10s %9d %7d%s\n", name, clients, rate, median, worst, bytes, memory, bad}' "$report"
}
sweeps() {
  curl --silent "http://127.0.0.1:$kova_port/metrics" | sed -n 's/^kova_sweeps_total //p'
}

printf '%-32s %4s %10s %10s %10s %9s %7s\n' target conn requests/s median 99% bytes MiB
before=$(sweeps)
load 'kova-exporter /metrics' "$kova" "http://127.0.0.1:$kova_port/metrics" 1
load 'kova-exporter /metrics' "$kova" "http://127.0.0.1:$kova_port/metrics" 32
load 'kova-exporter /metrics, gzip' "$kova" "http://127.0.0.1:$kova_port/metrics" 32 gzip
load 'kova-exporter /api/v1/items' "$kova" "http://127.0.0.1:$kova_port/api/v1/items" 32
load 'kova-exporter /' "$kova" "http://127.0.0.1:$kova_port/" 32
echo "sweeps during these $((5 * seconds)) s at an interval of 5 s: $(($(sweeps) - before))"
# node_exporter answers 40 at once and refuses more.
load 'node_exporter /metrics' "$node" "http://127.0.0.1:$node_port/metrics" 1
load 'node_exporter /metrics' "$node" "http://127.0.0.1:$node_port/metrics" 32
