#!/usr/bin/env bash
# Runs the monitoring pieces in the engines that fleets run: alert rules, a fleet of simulated
# machines under Prometheus and Alertmanager, Nagios, Icinga, an MQTT broker. All on loopback.
# Usage: scripts/monitoring_test.sh BUILD_DIR
set -euo pipefail
cd "$(dirname "$0")/.."
export KOVA_BUILD=${1:?usage: monitoring_test.sh BUILD_DIR}
scripts/install_dependencies.sh monitoring

promtool check rules tools/monitoring/prometheus/kova-alerts.yml >/dev/null
promtool test rules tests/monitoring/kova-alerts-test.yml
for unit in tools/monitoring/systemd/*.timer; do
  # The unit's program need not be installed here.
  complaints=$(systemd-analyze verify --man=no "$unit" 2>&1 | grep -v 'is not executable' || true)
  [ -z "$complaints" ] || {
    echo "$complaints" >&2
    exit 1
  }
done
python3 -B -m unittest discover -s tests/monitoring -p '*_test.py'
