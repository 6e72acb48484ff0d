#!/usr/bin/env bash
# Installs the Debian packages that a task needs and that are missing. Usage:
#   scripts/install_dependencies.sh TASK   (one of those below; build if none is named)
# Asks nothing, and is quiet when there is nothing to do.
set -euo pipefail

build="g++ cmake ninja-build pkgconf libjansson-dev libfmt-dev libcli11-dev libjs-dygraphs libmicrohttpd-dev libncurses-dev libsystemd-dev zlib1g-dev"
case "${1:-build}" in
  build) packages="$build" ;;
  test) packages="$build libgtest-dev locales python3 python3-jsonschema python3-pyte" ;;
  bench) packages="$build libbenchmark-dev" ;;
  check) packages="$build libgtest-dev locales clang-format clang-tidy clang shellcheck binutils python3 python3-jsonschema python3-pyte prometheus prometheus-node-exporter systemd" ;;
  monitoring) packages="$build python3 prometheus prometheus-alertmanager mosquitto mosquitto-clients nagios4-core icinga2-bin systemd" ;;
  docs) packages="$build libgtest-dev locales python3 python3-jsonschema python3-pyte curl mosquitto mosquitto-clients" ;;
  load) packages="$build wrk curl prometheus-node-exporter" ;;
  package) packages="$build dpkg-dev lintian rpm cpio python3" ;;
  package-test) packages="debootstrap debian-archive-keyring git" ;;
  fuzz) packages="$build clang libclang-rt-dev llvm" ;;
  browser) packages="$build chromium chromium-driver python3-selenium" ;;
  coverage) packages="$build libgtest-dev locales gcovr python3 python3-jsonschema python3-pyte" ;;
  valgrind) packages="$build libgtest-dev locales valgrind" ;;
  mutation) packages="$build libgtest-dev locales python3 python3-jsonschema python3-pyte ccache git" ;;
  *)
    echo "install_dependencies.sh: unknown task '$1'" >&2
    exit 2
    ;;
esac

missing=""
for package in $packages; do
  if [ "$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null)" != installed ]; then
    missing="$missing $package"
  fi
done
[ -z "$missing" ] && exit 0

as_root=""
[ "$(id -u)" -ne 0 ] && as_root="sudo"
echo "Installing:$missing"
log=$(mktemp)
trap 'rm -f "$log"' EXIT
export DEBIAN_FRONTEND=noninteractive
# The lists may be missing or stale on a fresh machine; the second try has new ones.
# shellcheck disable=SC2086
if ! $as_root apt-get install -y --no-install-recommends $missing >"$log" 2>&1; then
  if ! { $as_root apt-get update && $as_root apt-get install -y --no-install-recommends $missing; } \
    >"$log" 2>&1; then
    cat "$log" >&2
    exit 1
  fi
fi
