#!/usr/bin/env bash
# Tries the packages of build/packages/ on a bare Debian 12: a chroot of its own, in which they are
# installed, used as an engineer and a host programmer would, and removed without a trace. Needs
# root and the package mirror that apt is configured for; takes some minutes.
# Usage: scripts/package_test.sh [FOLDER FOR THE CHROOT]
set -euo pipefail
# shellcheck source=scripts/common.sh
. "$(dirname "$0")/common.sh"

fail() {
  echo "package_test.sh: $*" >&2
  exit 1
}

[ "$#" -le 1 ] || fail "usage: scripts/package_test.sh [FOLDER FOR THE CHROOT]"
[ "$(id -u)" -eq 0 ] || fail "has to run as root"
for package in kova-iot kova-iot-dev kova-iot-tools; do
  compgen -G "build/packages/${package}_*.deb" >/dev/null ||
    fail "no package $package: run scripts/package.sh first"
done
scripts/install_dependencies.sh package-test

mkdir -p "${1:-/var/tmp}"
root=$(mktemp -d "${1:-/var/tmp}/kova-package-test.XXXXXX")
trap 'rm -rf --one-file-system "$root"' EXIT

# With a /proc of its own that is gone with the command.
in_chroot() {
  unshare --mount --pid --fork --root="$root" --mount-proc \
    /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C DEBIAN_FRONTEND=noninteractive "$@"
}
# The packages and the files, apart from what apt, dpkg and ldconfig keep for themselves.
inventory() {
  in_chroot dpkg-query --show
  in_chroot find / -xdev \( -path /proc -o -path /sys -o -path /dev -o -path /tmp \
    -o -path /var/cache -o -path /var/log -o -path /var/lib/apt -o -path /var/lib/dpkg \) -prune -o -print | sort
}
step() {
  echo "$* ..."
}

# shellcheck disable=SC2016
mirror=$(apt-get indextargets --format '$(REPO_URI) $(RELEASE)' \
  'Created-By: Packages' 'Origin: Debian' | awk '$2 == "bookworm" { print $1; exit }')
[ -n "$mirror" ] || fail "apt is configured for no mirror of bookworm"
step "Making a bare Debian 12 in $root"
quietly debootstrap --variant=minbase bookworm "$root" "$mirror"
inventory >"$root/tmp/before"

step "Installing kova-iot and kova-iot-tools"
cp build/packages/*.deb "$root/tmp/"
quietly in_chroot apt-get update
quietly in_chroot sh -c "apt-get install -y --no-install-recommends \
  /tmp/kova-iot_*.deb /tmp/kova-iot-tools_*.deb"
in_chroot kovactl --simulate list >"$root/tmp/list"
grep -q 'TRK7K VTIN 1' "$root/tmp/list" || fail "kovactl --simulate list: $(cat "$root/tmp/list")"
grep -v '^ ' "$root/tmp/list" | sed '/^$/d; s/^/  /'
status=0
in_chroot kovactl list >/dev/null 2>&1 || status=$?
[ "$status" -eq 3 ] || fail "kovactl without a device ends with $status, not 3"
in_chroot kovactl --simulate sixteen-modules list --family SDRAM >/dev/null

step "Compiling and running a host with kova-iot-dev"
quietly in_chroot sh -c "apt-get install -y --no-install-recommends gcc libc6-dev pkgconf \
  python3 /tmp/kova-iot-dev_*.deb"
# shellcheck disable=SC2016
in_chroot sh -e -c '
  examples=/usr/share/doc/kova-iot-dev/examples
  plugin=$(pkg-config --variable=plugin kova-iot)
  gcc -std=c11 -Wall -Werror "$examples/minimal_host.c" -o /tmp/host \
    $(pkg-config --cflags --libs kova-iot)
  export LD_PRELOAD=$(pkg-config --variable=simulator kova-iot)
  # Agents name the plug-in without a folder.
  for named in "$plugin" libKovaIoT.so; do
    /tmp/host "$named" >/tmp/output
  done
  python3 "$examples/minimal_host.py" "$plugin" >/tmp/output
  tail -n 2 /tmp/output'

step "Removing everything"
quietly in_chroot apt-get purge -y kova-iot kova-iot-dev kova-iot-tools gcc pkgconf libc6-dev \
  python3
quietly in_chroot apt-get autoremove --purge -y
inventory >"$root/tmp/after"
diff "$root/tmp/before" "$root/tmp/after" >&2 || fail "the chroot is not as it was"
echo "The packages install, run and leave nothing behind on a bare Debian 12."
