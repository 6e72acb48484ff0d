#!/usr/bin/env bash
# Checks what the tests do not: format, clang-tidy, shell scripts, a clang build, the exports and
# hardening of the plug-in, metrics in a real Prometheus, docs/items.md, and the Debian packages.
# Installs what is missing and prints only what is wrong.
set -euo pipefail
# shellcheck source=scripts/common.sh
. "$(dirname "$0")/common.sh"
scripts/install_dependencies.sh check

mapfile -t sources < <(git ls-files '*.h' '*.c' '*.cpp')
clang-format-14 --dry-run --Werror "${sources[@]}"
mapfile -t shell_scripts < <(git ls-files '*.sh' '.ci/run')
shellcheck -x "${shell_scripts[@]}"

echo "Building (clang) ..."
build_preset clang
scripts/check_binary.sh build/clang
build_preset dev
scripts/check_binary.sh build/dev
scripts/metrics_check.sh build/dev
scripts/items.sh --check

echo "Packaging ..."
quietly scripts/package.sh

echo "Running clang-tidy ..."
mapfile -t units < <(git ls-files '*.cpp' ':!tests/fuzz' ':!bench')
quietly run-clang-tidy-14 -quiet -p build/clang "${units[@]/#/$repository/}"
echo "Format, clang-tidy, scripts, binaries, documents and packages are in order."
