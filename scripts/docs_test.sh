#!/usr/bin/env bash
# Runs the commands that the README and the pages of docs/ show, as they are written, on an
# installation of the source as it is. What cannot be run here says why in the page, and is counted.
# Installs and builds what is missing. Usage: scripts/docs_test.sh [PAGE...]
set -euo pipefail
# shellcheck source=scripts/common.sh
. "$(dirname "$0")/common.sh"
scripts/install_dependencies.sh docs
[ "$#" -gt 0 ] || mapfile -t pages < <(git ls-files '*.md' ':!CHANGELOG.md')
[ "$#" -eq 0 ] || pages=("$@")

build_preset dev
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
quietly cmake --install build/dev --prefix "$prefix"
# The agent of the pages' examples: a host of the module that reads every item.
printf '#!/bin/sh\nexec %s/bin/kovactl list\n' "$prefix" >"$prefix/bin/your-agent"
chmod +x "$prefix/bin/your-agent"
pkgconfig=$(dirname "$(find "$prefix" -name 'kova-iot.pc')")

before=$(git status --porcelain)
PATH=$prefix/bin:$PATH PKG_CONFIG_PATH=$pkgconfig python3 -B scripts/docs_test.py "${pages[@]}"
[ "$(git status --porcelain)" = "$before" ] || {
  git status --short >&2
  echo "docs_test.sh: the pages' commands change the source tree" >&2
  exit 1
}
