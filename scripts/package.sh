#!/usr/bin/env bash
# Makes the Debian packages kova-iot, kova-iot-dev, kova-iot-tools and kova-iot-exporter in
# build/packages/ and holds them to lintian, whose warnings are shown and whose errors fail. Installs what is missing.
set -euo pipefail
# shellcheck source=scripts/common.sh
. "$(dirname "$0")/common.sh"
if [ "$#" -ne 0 ]; then
  echo "usage: scripts/package.sh" >&2
  exit 2
fi
scripts/install_dependencies.sh package

umask 022
# The time in the packages' files, so that the same commit makes the same packages.
if time=$(git log -1 --format=%ct 2>/dev/null); then
  export SOURCE_DATE_EPOCH=$time
fi
build_preset release
rm -rf build/packages
quietly cpack --config build/release/CPackConfig.cmake -B "$repository/build/packages"
rm -rf build/packages/_CPack_Packages

lintian --allow-root --fail-on error --tag-display-limit 0 build/packages/*.deb
ls -l build/packages/*.deb
