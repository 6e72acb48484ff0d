#!/usr/bin/env bash
# Builds the benchmarks and prints their table: times, ratios, and which goals are met. It reports
# and never fails on a time. --short takes a few seconds: a look that all of it still runs.
set -euo pipefail
# shellcheck source=scripts/common.sh
. "$(dirname "$0")/common.sh"

min_time=0.03 repetitions=15 loads=21
case "${1-}" in
  "") ;;
  --short) min_time=0.002 repetitions=3 loads=3 ;;
  *)
    echo "usage: scripts/bench.sh [--short]" >&2
    exit 2
    ;;
esac

scripts/install_dependencies.sh bench
build_preset bench
build=build/bench

# Items and their floors take turns, so that what else the machine does falls on both alike.
"$build/bench/kova_benchmarks" --benchmark_format=csv --benchmark_min_time="$min_time" \
  --benchmark_repetitions="$repetitions" --benchmark_enable_random_interleaving=true \
  --benchmark_report_aggregates_only=true 2>"$build/bench.log" >"$build/bench.csv"
awk -f scripts/bench_table.awk "$build/bench.csv"

# A call to the device library, recorded and not; loading an hour's recording, and its size.
echo
"$build/bench/kova_recording_benchmarks" "$build/recorder/libKOVADeviceRecorder.so" \
  "$build/bench/libkova_counting_library.so" --benchmark_format=csv \
  --benchmark_min_time="$min_time" 2>"$build/bench.log" |
  awk -F, '/^"(call|hour)/ {
    gsub(/"/, ""); sub(/.iterations:.*/, "", $1); printf "%-28s %9.1f %s%s\n", $1, $4, $5, $8 == "" ? "" : "  (" $8 ")" }'

# Medians over fresh processes.
echo
for host in "in C" "in C++"; do
  for ((i = 0; i < loads; ++i)); do
    "$build/bench/kova_load_cost" "$build/module/libKovaIoT.so" "$host"
  done >"$build/load_cost.txt"
  median() { cut -d' ' -f"$1" "$build/load_cost.txt" | sort -n | sed -n "$(((loads + 1) / 2))p"; }
  echo "A host $host: $(median 1) us to load the module, which adds $(median 2) KiB of resident" \
    "memory loaded and $(median 3) KiB started"
done
