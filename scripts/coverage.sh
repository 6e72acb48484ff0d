#!/usr/bin/env bash
# Measures what the tests reach of the code in the module. Installs and builds what is missing, and
# exits 1 below 97 % of lines or 93 % of branches. Details: build/coverage/report.txt, and line by
# line in build/coverage/html/index.html. Branches that only exceptions take are left out: the
# fault tests take them, but gcov counts them once for every call that might throw.
set -euo pipefail
# shellcheck source=scripts/common.sh
. "$(dirname "$0")/common.sh"
scripts/install_dependencies.sh coverage

folder=build/coverage
echo "Building (coverage) ..."
quietly cmake --preset dev -B "$folder" -DCMAKE_BUILD_TYPE=Debug -DKOVA_COVERAGE=ON \
  -DKOVA_BUILD_TOOLS=OFF
quietly cmake --build "$folder" --parallel "$(nproc)"
find "$folder" -name '*.gcda' -delete
quietly ctest --test-dir "$folder" --output-on-failure --parallel "$(nproc)"

mkdir -p "$folder/html"
gcovr --root . "$folder" --filter module/ --filter framework/ --filter devices/ \
  --exclude module/items/ --exclude-throw-branches --exclude-unreachable-branches \
  --txt "$folder/report.txt" --html-details "$folder/html/index.html" \
  --json-summary "$folder/summary.json" --print-summary >"$folder/summary.txt"
python3 - "$folder/summary.json" <<'PYTHON'
import json, sys
summary = json.load(open(sys.argv[1]))
failed = False
for what, goal in (("line", 97), ("branch", 93)):
    covered, total = summary[what + "_covered"], summary[what + "_total"]
    percent = 100 * covered / total
    print(f"{what} coverage: {percent:.1f} % ({covered} of {total}), at least {goal} % wanted")
    failed |= percent < goal
sys.exit(failed)
PYTHON
