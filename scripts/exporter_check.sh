#!/usr/bin/env bash
# Checks of kova-exporter beside its tests: the systemd unit, and its tests under ThreadSanitizer,
# with those of the recorder.
#   scripts/exporter_check.sh BUILD_DIR
set -euo pipefail
# shellcheck source=scripts/common.sh
. "$(dirname "$0")/common.sh"
build=${1:?usage: scripts/exporter_check.sh BUILD_DIR}

# The unit as it ships names the installed program, which need not be on this machine.
make_work_folder
unit=$work/kova-exporter.service
sed "s#^ExecStart=[^ ]*#ExecStart=$repository/$build/tools/exporter/kova-exporter#" \
  "$build/tools/exporter/kova-exporter.service" >"$unit"
systemd-analyze verify --man=no "$unit"
# Exposure from 0 to 10, times ten: 2.5 with the devices of the machine left open.
systemd-analyze security --offline=true --no-pager --threshold=25 "$unit" |
  sed -n 's/^.*Overall exposure level for kova-exporter.service/Exposure of the unit/p'

quietly cmake --preset tsan
quietly cmake --build build/tsan --parallel "$(nproc)" --target exporter_test kova_threads_agent \
  KOVADeviceRecorder KOVADeviceSim
quietly ctest --test-dir build/tsan -R '^exporter|^recorder.*test_threads$' --output-on-failure
echo "The exporter's unit, and the threads of exporter and recorder, are in order."
