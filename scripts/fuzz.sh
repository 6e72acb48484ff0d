#!/usr/bin/env bash
# Builds the fuzz targets and runs each for some seconds on its seeds and on what earlier runs have
# found. Installs what is missing. Usage: scripts/fuzz.sh [SECONDS] [TARGET...]
# One line per target; a finding ends the run with exit code 1 and the path of its reproducer.
set -euo pipefail
# shellcheck source=scripts/common.sh
. "$(dirname "$0")/common.sh"
seconds=${1:-60}
shift || true
scripts/install_dependencies.sh fuzz

targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  for source in tests/fuzz/*_fuzz.cpp; do
    targets+=("$(basename "$source" .cpp)")
  done
fi

echo "Building (fuzz) ..."
quietly cmake --preset fuzz
quietly cmake --build build/fuzz --parallel "$(nproc)" --target "${targets[@]}"
export ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1
export UBSAN_OPTIONS=print_stacktrace=1

for target in "${targets[@]}"; do
  corpus=build/fuzz/corpus/$target
  findings=build/fuzz/findings
  log=build/fuzz/$target.log
  mkdir -p "$corpus" "$findings"
  options=(-max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1
    -artifact_prefix="$findings/$target-")
  [ -e "tests/fuzz/$target.dict" ] && options+=(-dict="tests/fuzz/$target.dict")
  seeds=(tests/fuzz/corpus/"$target")
  # A description's own limit, which the target checks; no single allocation reaches it either.
  [ "$target" = simulator_fuzz ] && seeds+=(simulator/machines) && options+=(-malloc_limit_mb=64)
  if ! build/fuzz/tests/fuzz/"$target" "${options[@]}" "$corpus" "${seeds[@]}" >"$log" 2>&1; then
    grep -v '^#' "$log" | tail -n 40 >&2
    reproducer=$(sed -n 's/.*Test unit written to //p' "$log" | tail -n 1)
    echo "$target: found something; reproduce it with" \
      "build/fuzz/tests/fuzz/$target ${reproducer:-(see $log)}" >&2
    exit 1
  fi
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
  covered=$(sed -n 's/.*DONE *cov: \([0-9]*\) .*/\1/p' "$log")
  echo "$target: $runs inputs, $covered places covered, nothing found"
done
