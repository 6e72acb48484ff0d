#!/usr/bin/env bash
# What a release must pass beside test.sh and check.sh: short runs of the fuzzers and of the
# benchmarks, the packages on a bare system, and both commands of the README on bare systems of each
# Debian release. Takes an hour, and root. Arguments go to package_test.sh: what to upgrade from.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/fuzz.sh 3
scripts/bench.sh --short
scripts/package_test.sh "$@"
scripts/chroot_test.sh
