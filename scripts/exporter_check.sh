#!/usr/bin/env bash
# Checks of kova-exporter beside its tests: the systemd units that run a device library, and its
# tests under ThreadSanitizer, with those of the recorder.
#   scripts/exporter_check.sh BUILD_DIR
set -euo pipefail
# shellcheck source=scripts/common.sh
. "$(dirname "$0")/common.sh"
build=${1:?usage: scripts/exporter_check.sh BUILD_DIR}

# The units as they ship name the installed programs, which need not be on this machine.
make_work_folder
# check_unit FILE PROGRAM EXPOSURE: from 0 to 10, times ten, with the devices left open.
check_unit() {
  local unit
  unit=$work/$(basename "$1")
  sed "s#^ExecStart=[^ ]*#ExecStart=$repository/$2#" "$1" >"$unit"
  systemd-analyze verify --man=no "$unit"
  systemd-analyze security --offline=true --no-pager --threshold="$3" "$unit" |
    sed -n 's/^.*Overall exposure level for/Exposure of/p'
}
exporter_unit=$build/tools/exporter/kova-exporter.service
metrics_unit=tools/monitoring/systemd/kova-metrics.service
check_unit "$exporter_unit" "$build/tools/exporter/kova-exporter" 22
check_unit "$metrics_unit" "$build/tools/kovactl/kovactl" 15
# Both run the same library: what is closed for one is closed for the other.
closed() { sed -n '/^DevicePolicy=/,/^\[Install\]/ { /^[A-Za-z]*=/p }' "$1"; }
diff <(closed "$exporter_unit") <(closed "$metrics_unit")

quietly cmake --preset tsan
quietly cmake --build build/tsan --parallel "$(nproc)" --target exporter_test kova_threads_agent \
  KOVADeviceRecorder KOVADeviceSim
quietly ctest --test-dir build/tsan -R '^exporter|^recorder.*test_threads$' --output-on-failure
echo "The units, and the threads of exporter and recorder, are in order."
