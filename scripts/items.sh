#!/usr/bin/env bash
# Writes docs/items.md from the families' rows. Usage: scripts/items.sh [--check]
# --check writes nothing, and fails when the file is not what would be written.
set -euo pipefail
# shellcheck source=scripts/common.sh
. "$(dirname "$0")/common.sh"
case "$#,${1:-}" in
  0,) check=no ;;
  1,--check) check=yes ;;
  *)
    echo "usage: scripts/items.sh [--check]" >&2
    exit 2
    ;;
esac

scripts/install_dependencies.sh test
quietly cmake --preset dev
quietly cmake --build build/dev --parallel "$(nproc)" --target items_document
made=$(mktemp)
trap 'rm -f "$made"' EXIT
build/dev/module/items/items_document --markdown >"$made"

if [ "$check" = no ]; then
  cat "$made" >docs/items.md
elif ! diff -u docs/items.md "$made" >&2; then
  echo "docs/items.md is stale: run scripts/items.sh" >&2
  exit 1
fi
