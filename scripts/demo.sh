#!/usr/bin/env bash
# Shows the module at work on a machine without the hardware: every item of the simulated
# machine, one read and one write. Installs and builds what is missing: a part of test.sh's build.
set -euo pipefail
# shellcheck source=scripts/common.sh
. "$(dirname "$0")/common.sh"
scripts/install_dependencies.sh test
quietly cmake --preset dev
quietly cmake --build build/dev --parallel "$(nproc)" --target KovaIoT KOVADeviceSim kovactl
kovactl=build/dev/tools/kovactl/kovactl

show() {
  printf '\n$ kovactl %s\n' "$*"
  "$kovactl" "$@"
}
show --simulate list
show --simulate get 0x14170111
show --simulate set 0x14140B01 Disable
