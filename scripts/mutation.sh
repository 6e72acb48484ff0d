#!/usr/bin/env bash
# Measures how many small faults in our own C++ the tests find (mutation testing), and prints the
# score and the mutants that survived. Installs and builds what is missing. Usage:
#   scripts/mutation.sh [FOLDER...] [--sample N] [--seed N] [--jobs N] [--at-least PERCENT]
# scripts/mutation.sh --help tells all options. A fault may do anything that the user may: run it on
# a machine that can be thrown away, or not as root.
set -euo pipefail
# shellcheck source=scripts/common.sh
. "$(dirname "$0")/common.sh"
scripts/install_dependencies.sh mutation
# Neither a mutant nor its tests are anything that somebody waits for.
exec nice python3 -B scripts/mutation/mutation.py "$@"
