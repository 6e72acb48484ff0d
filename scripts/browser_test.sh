#!/usr/bin/env bash
# Opens the live page and a report in headless Chromium, as a reader would. Needs a build; leaves
# screenshots in its folder browser. Usage: scripts/browser_test.sh [BUILD_FOLDER]
set -euo pipefail
# shellcheck source=scripts/common.sh
. "$(dirname "$0")/common.sh"
scripts/install_dependencies.sh browser

# Debian's interpreter: its Selenium is no other's.
quietly /usr/bin/python3 -B tests/exporter/browser_test.py "${1:-build/dev}"
