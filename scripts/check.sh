#!/usr/bin/env bash
# Checks what the tests do not: format, clang-tidy with clang's own warnings, shell scripts, the
# exports and hardening of what is shipped, metrics in a real Prometheus, the live page in a browser,
# the exporter's unit and threads, the monitoring pieces in their engines, the commands of the pages,
# the packages and a second build of them. Installs what is missing. release_check.sh has what takes
# longer.
set -euo pipefail
# shellcheck source=scripts/common.sh
. "$(dirname "$0")/common.sh"
scripts/install_dependencies.sh check

# Each version of clang-format has its own idea of some lines. The source has version 14's.
if clang-format --version | grep -q ' version 14\.'; then
  mapfile -t sources < <(git ls-files '*.h' '*.c' '*.cpp')
  clang-format --dry-run --Werror "${sources[@]}"
else
  echo "The layout is not checked: it is that of clang-format 14, of Debian 12."
fi
mapfile -t shell_scripts < <(git ls-files '*.sh' '.ci/run')
shellcheck -x "${shell_scripts[@]}"
shellcheck --shell=sh cmake/unit_scripts/*.in

echo "Checking the plug-in and the metrics ..."
build_preset dev
scripts/check_binary.sh build/dev
scripts/metrics_check.sh build/dev
scripts/browser_test.sh build/dev
scripts/exporter_check.sh build/dev
scripts/monitoring_test.sh build/dev
scripts/docs_test.sh

echo "Making the packages, twice ..."
scripts/package.sh
scripts/package_check.sh
scripts/check_binary.sh build/release

echo "Running clang-tidy ..."
quietly cmake --preset clang
mapfile -t units < <(git ls-files '*.cpp' ':!tests/fuzz' ':!bench')
if ! run-clang-tidy -quiet -p build/clang -j "$(nproc)" "${units[@]/#/$repository/}" \
  >build/clang/tidy.log 2>&1; then
  grep -A 4 -e 'error:' -e 'Stack dump:' build/clang/tidy.log >&2 || true
  echo "check.sh: clang-tidy fails (build/clang/tidy.log)" >&2
  exit 1
fi

echo "Format, clang-tidy, scripts, binaries, programs, pages and packages are in order."
