#!/usr/bin/env bash
# Writes docs/items.md and docs/metrics.md from the families' rows, and docs/host-guide.md's table of
# statuses from the C header. Usage: scripts/items.sh [--check BUILD_FOLDER PAGE...]
# --check writes and builds nothing, and fails when a page is not what would be written.
set -euo pipefail
# shellcheck source=scripts/common.sh
. "$(dirname "$0")/common.sh"
build=build/dev
pages=(items.md metrics.md host-guide.md)
case "$#,${1:-}" in
  0,)
    scripts/install_dependencies.sh test
    quietly cmake --preset dev
    quietly cmake --build "$build" --parallel "$(nproc)" --target items_document metrics_document
    ;;
  [3-9],--check)
    build=$2
    pages=("${@:3}")
    ;;
  *)
    echo "usage: scripts/items.sh [--check BUILD_FOLDER PAGE...]" >&2
    exit 2
    ;;
esac

made=$(mktemp -d)
trap 'rm -rf "$made"' EXIT
generator=$build/module/items/items_document
make_page() {
  case $1 in
    items.md) "$generator" --markdown ;;
    metrics.md) "$build/tools/host/metrics_document" ;;
    host-guide.md)
      # What stands before the table's first status, the statuses, and what follows them.
      "$generator" --statuses >"$made/statuses"
      awk -v statuses="$made/statuses" '
        /^\| `IOT_STATUS_/ { if (!done++) while ((getline line < statuses) > 0) print line; next }
        { print }' docs/host-guide.md
      ;;
  esac
}

for page in "${pages[@]}"; do
  make_page "$page" >"$made/$page"
  if [ $# -eq 0 ]; then
    cat "$made/$page" >"docs/$page"
  elif ! diff -u "docs/$page" "$made/$page" >&2; then
    echo "docs/$page is stale: run scripts/items.sh" >&2
    exit 1
  fi
done
