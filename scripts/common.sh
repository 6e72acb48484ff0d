# shellcheck shell=bash
# Helpers that the other scripts source: quiet steps, builds of a preset, a folder for a while.

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

# Makes a folder, $work, that is removed when the script ends. Processes whose IDs the script puts
# into the array started are ended then too.
make_work_folder() {
  work=$(mktemp -d)
  started=()
  trap finish_work EXIT
}
finish_work() {
  local process
  for process in "${started[@]}"; do
    kill "$process" 2>/dev/null || true
    wait "$process" 2>/dev/null || true
  done
  rm -rf "$work"
}
