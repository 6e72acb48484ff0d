#!/usr/bin/env bash
# Runs the module's tests and the plug-in's life cycle under valgrind: invalid and uninitialised
# reads, and leaks in the code as it ships. Installs and builds what is missing.
set -euo pipefail
# shellcheck source=scripts/common.sh
. "$(dirname "$0")/common.sh"
scripts/install_dependencies.sh valgrind

echo "Building (dev) ..."
build_preset dev

# The fault tests bring their own operator new, which must stay in force.
memcheck=(valgrind --quiet --error-exitcode=1 --leak-check=full
  "--errors-for-leak-kinds=definite,indirect,possible"
  --soname-synonyms=somalloc=nouserintercepts)

# The two longest sweeps over allocations would take minutes here; AddressSanitizer runs them.
for test in module_tests "faults/fault_tests --gtest_filter=-*StartMakesAModule*" \
  "faults/plugin_fault_tests --gtest_filter=-*TooLittleMemory*"; do
  # shellcheck disable=SC2086
  quietly "${memcheck[@]}" build/dev/tests/$test
  echo "${test%% *}: clean under valgrind"
done
