#!/usr/bin/env bash
# What a release must pass beside test.sh and check.sh: the packages and a second build of them, the
# commands of the pages, and short runs of the fuzzers and of the benchmarks.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/package.sh
scripts/package_check.sh
scripts/check_binary.sh build/release
scripts/docs_test.sh
scripts/fuzz.sh 3
scripts/bench.sh --short
