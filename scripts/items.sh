#!/usr/bin/env bash
# Writes docs/items.md and docs/metrics.md from the families' rows, docs/host-guide.md's table of
# statuses from the C header, and from the table of judgements that of docs/fleet.md and the alert
# rules. Usage: scripts/items.sh [--check BUILD_FOLDER PAGE...]
# --check writes and builds nothing, and fails when a page is not what would be written.
set -euo pipefail
# shellcheck source=scripts/common.sh
. "$(dirname "$0")/common.sh"
build=build/dev
pages=(items.md metrics.md host-guide.md fleet.md kova-alerts.yml)
case "$#,${1:-}" in
  0,)
    scripts/install_dependencies.sh test
    quietly cmake --preset dev
    quietly cmake --build "$build" --parallel "$(nproc)" \
      --target items_document metrics_document judgement_document
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
judgements=$build/tools/host/judgement_document

# The page with its rows that match the pattern replaced by what stdin has.
with_rows() {
  cat >"$made/rows"
  awk -v rows="$made/rows" -v pattern="$2" '
    $0 ~ pattern { if (!done++) while ((getline line < rows) > 0) print line; next }
    { print }' "$1"
}
make_page() {
  case $1 in
    items.md) "$generator" --markdown ;;
    metrics.md) "$build/tools/host/metrics_document" ;;
    host-guide.md) "$generator" --statuses | with_rows docs/host-guide.md '^[|] .IOT_STATUS_' ;;
    fleet.md) "$judgements" --table | with_rows docs/fleet.md '^[|] .[a-z-]+. [|] .Kova' ;;
    kova-alerts.yml) "$judgements" --alerts ;;
  esac
}

for page in "${pages[@]}"; do
  file=docs/$page
  [[ $page == *.md ]] || file=tools/monitoring/prometheus/$page
  make_page "$page" >"$made/$page"
  if [ $# -eq 0 ]; then
    cat "$made/$page" >"$file"
  elif ! diff -u "$file" "$made/$page" >&2; then
    echo "$file is stale: run scripts/items.sh" >&2
    exit 1
  fi
done
