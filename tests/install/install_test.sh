#!/usr/bin/env bash
# Installs a build under DESTDIR and another prefix than it was configured for, and uses what is
# there: pkg-config and CMake builds of the example host, kovactl, the simulator.
# Usage: install_test.sh BUILD_FOLDER SOURCE_FOLDER
set -euo pipefail
build=$1
source=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
stage=$work/stage
prefix=$stage/opt/kova

fail() {
  echo "install_test.sh: $*" >&2
  exit 1
}

# Runs a host on the installed plug-in and simulator.
run_host() {
  local output
  output=$(LD_PRELOAD=$simulator "$1" "$2") || fail "$1 failed"
  grep -q '^ignition delay on: 10 s$' <<<"$output" || fail "$1 printed: $output"
}

DESTDIR=$stage cmake --install "$build" --prefix /opt/kova >/dev/null
[ -z "$(find "$stage" -type f -not -path "$prefix/*")" ] || fail "files outside the prefix"
[ -z "$(find "$stage" -name 'libKOVADevice.so*')" ] || fail "stands in for the device library"

package=$(find "$prefix" -name kova-iot.pc)
export PKG_CONFIG_PATH=${package%/*}
simulator=$(pkg-config --variable=simulator kova-iot)
version=$(sed -n 's/^#define KOVA_IOT_VERSION "\(.*\)"$/\1/p' "$prefix/include/kova_iot.h")
for found in "$(pkg-config --modversion kova-iot)" "$("$prefix/bin/kovactl" --version)"; do
  [ "${found##* }" = "$version" ] || fail "version $found, not $version"
done
grep -q "\"release\": \"$version\"" "$(pkg-config --variable=items kova-iot)" ||
  fail "no list of items of this release"

# shellcheck disable=SC2046
cc -std=c11 -Werror "$source/examples/minimal_host.c" -o "$work/host" \
  $(pkg-config --cflags --libs kova-iot)
run_host "$work/host" "$(pkg-config --variable=plugin kova-iot)"

configure() {
  cmake -G Ninja -S "$source/tests/install/consumer" -B "$work/consumer" -DCMAKE_PREFIX_PATH="$prefix" \
    -DEXAMPLE="$source/examples/minimal_host.c" -DWANTED="$1"
}
configure 99 >/dev/null 2>&1 && fail "find_package takes version 99"
configure "$version" >/dev/null
cmake --build "$work/consumer" >/dev/null
run_host "$work/consumer/host" "$(cat "$work/consumer/plugin")"
[ "$(realpath "$(cat "$work/consumer/simulator")")" = "$(realpath "$simulator")" ] ||
  fail "find_package finds another simulator than pkg-config"
[ -s "$(cat "$work/consumer/items")" ] || fail "find_package does not find the list of items"

listed=$("$prefix/bin/kovactl" --simulate sixteen-modules list --family SDRAM) ||
  fail "kovactl does not find its module, simulator or machines"
grep -q '^SDRAM: SDRAM15' <<<"$listed" || fail "kovactl listed: $listed"

if ! "$prefix/bin/kovactl" --simulate record "$work/machine.json" >/dev/null ||
  ! "$prefix/bin/kovactl" diff "$work/machine.json" "$work/machine.json" >/dev/null; then
  fail "kovactl does not find the recorder"
fi
[ -s "$(pkg-config --variable=recorder kova-iot)" ] || fail "no recorder"
modules=$(KOVA_SIM_MACHINE=sixteen-modules LD_PRELOAD=$simulator "$prefix/bin/kovactl" capability |
  grep -c '"SDRAM[0-9][0-9]*": {')
[ "$modules" -eq 16 ] || fail "KOVA_SIM_MACHINE names a machine of $modules modules"

while IFS=: read -r document link; do
  link=${link:2:-1}  # without "](" and ")" or "#"
  [ -e "${document%/*}/$link" ] || fail "$document links to $link"
done < <(grep -roE --include='*.md' '\]\([^)#:]+[)#]' "$prefix/share/doc")

for file in share/man/man1/kovactl.1 share/man/man3/kova_iot.3 share/man/man5/kova-machine.5 \
  share/bash-completion/completions/kovactl share/zsh/vendor-completions/_kovactl \
  share/fish/vendor_completions.d/kovactl.fish share/doc/kova-iot-dev/host-guide.md \
  share/doc/kova-iot-dev/items.md share/doc/kova-iot-tools/support.md; do
  [ -s "$prefix/$file" ] || fail "no $file"
done
