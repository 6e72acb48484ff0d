# shellcheck shell=bash
# Helpers that the other scripts source: quiet steps and builds of a preset.

repository=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$repository" || exit 1

# Runs a command and shows what it printed only when it fails.
quietly() {
  local log
  log=$(mktemp)
  if ! "$@" >"$log" 2>&1; then
    cat "$log" >&2
    rm -f "$log"
    echo "failed: $*" >&2
    return 1
  fi
  rm -f "$log"
}

# Configures and builds a preset; further arguments go to the configuration.
build_preset() {
  local preset=$1
  shift
  quietly cmake --preset "$preset" "$@"
  quietly cmake --build "build/$preset" --parallel "$(nproc)"
}
