#!/usr/bin/env bash
# Builds and runs all tests: plain, then under AddressSanitizer, UndefinedBehaviorSanitizer and
# LeakSanitizer. Installs what is missing. The last line says how many tests ran.
set -euo pipefail
# shellcheck source=scripts/common.sh
. "$(dirname "$0")/common.sh"
scripts/install_dependencies.sh test

export ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1:detect_stack_use_after_return=1
export UBSAN_OPTIONS=print_stacktrace=1

# Many tests wait most of their time: for a device that hangs, or a client that is slow.
parallel=$(($(nproc) + 1))
counts=()
for preset in dev asan; do
  echo "Building ($preset) ..."
  build_preset "$preset"
  log="build/$preset/tests.log"
  if ! ctest --test-dir "build/$preset" --output-on-failure --parallel "$parallel" >"$log" 2>&1; then
    cat "$log" >&2
    exit 1
  fi
  count=$(sed -n 's/.*tests passed, 0 tests failed out of \([0-9]*\)$/\1/p' "$log")
  skipped=$(grep -c -E 'Not Run|Skipped' "$log" || true)
  if [ "${count:-0}" -eq 0 ] || [ "$skipped" -ne 0 ]; then
    echo "test.sh: ${count:-0} tests ran, $skipped were skipped ($log)" >&2
    exit 1
  fi
  counts+=("$count")
done
echo "All $((counts[0] + counts[1])) tests passed: ${counts[0]} plain and ${counts[1]} under" \
  "AddressSanitizer, UBSan and LeakSanitizer."
