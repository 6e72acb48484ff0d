#!/usr/bin/env bash
# Tries the Debian packages of build/packages/ on a bare Debian 12: a chroot of its own, in which they
# are installed, used as an engineer and a host programmer would, and removed without a trace. Needs
# root and the package mirror that apt is configured for; takes some minutes.
# Usage: scripts/package_test.sh [--from FOLDER] [FOLDER FOR THE CHROOT]
# With --from, an older release's packages are installed first, upgraded, and installed again.
set -euo pipefail
# shellcheck source=scripts/common.sh
. "$(dirname "$0")/common.sh"
# shellcheck source=scripts/chroot.sh
. "$repository/scripts/chroot.sh"

fail() {
  echo "package_test.sh: $*" >&2
  exit 1
}

older=""
if [ "${1:-}" = --from ]; then
  older=${2:?usage: scripts/package_test.sh [--from FOLDER] [FOLDER FOR THE CHROOT]}
  shift 2
fi
[ "$#" -le 1 ] || fail "usage: scripts/package_test.sh [--from FOLDER] [FOLDER FOR THE CHROOT]"
[ "$(id -u)" -eq 0 ] || fail "has to run as root"
compgen -G "build/packages/*.deb" >/dev/null || fail "no packages: run scripts/package.sh first"
scripts/install_dependencies.sh package-test

mkdir -p "${1:-/var/tmp}"
root=$(mktemp -d "${1:-/var/tmp}/kova-package-test.XXXXXX")
trap 'rm -rf --one-file-system "$root"' EXIT

# The packages and the files, apart from what apt, dpkg and ldconfig keep for themselves.
inventory() {
  in_chroot dpkg-query --show
  in_chroot find / -xdev \( -path /proc -o -path /sys -o -path /dev -o -path /tmp \
    -o -path /var/cache -o -path /var/log -o -path /var/lib/apt -o -path /var/lib/dpkg \) -prune -o -print | sort
}
step() {
  echo "$* ..."
}
# Installs packages of a folder in the chroot, whatever version is there.
install() {
  quietly in_chroot sh -c "apt-get install -y --no-install-recommends --allow-downgrades $*"
}
names() {
  local package
  for package in "$1"/*.deb; do
    dpkg-deb --field "$package" Package
  done
}
# shellcheck disable=SC2016
version() {
  in_chroot dpkg-query --show --showformat '${Version}' kova-iot
}

# What an administrator sets up: options, a drop-in, and the service enabled, offline.
configuration=(etc/default/kova-exporter etc/systemd/system/kova-exporter.service.d/own.conf)
enabled=etc/systemd/system/multi-user.target.wants/kova-exporter.service
configure() {
  local file
  for file in "${configuration[@]}"; do
    mkdir -p "$(dirname "$root/$file")"
    echo "# the administrator's own" >"$root/$file"
  done
  # As systemctl does, which is not there.
  mkdir -p "$(dirname "$root/$enabled")"
  ln -s /lib/systemd/system/kova-exporter.service "$root/$enabled"
  keeps_configuration "enabling it"
}
keeps_configuration() {
  local file
  for file in "${configuration[@]}"; do
    grep -q "administrator's own" "$root/$file" || fail "$* changes /$file"
  done
  [ -L "$root/$enabled" ] || fail "$* disables the service"
}
# Purging takes what enabling made; the administrator takes the rest.
remove_configuration() {
  [ ! -L "$root/$enabled" ] || fail "purging leaves the service enabled"
  (cd "$root" && rm -f "${configuration[@]}")
  rmdir "$root/etc/systemd/system/kova-exporter.service.d"
}

step "Making a bare Debian 12 in $root"
make_chroot bookworm "$root"
inventory >"$root/tmp/before"

mapfile -t packages < <(names build/packages)
mkdir "$root/tmp/new"
cp build/packages/*.deb "$root/tmp/new/"
quietly in_chroot apt-get update

if [ -n "$older" ]; then
  step "Upgrading from the packages of $older, and going back"
  mkdir "$root/tmp/old"
  cp "$older"/*.deb "$root/tmp/old/"
  mapfile -t old_packages < <(names "$older")
  install "/tmp/old/*.deb"
  old_version=$(version)
  install "/tmp/new/*.deb"
  new_version=$(version)
  [ "$new_version" != "$old_version" ] || fail "both are version $new_version"
  in_chroot dpkg --verify "${packages[@]}" || fail "an upgrade changes the packages' files"
  in_chroot kovactl --simulate list >"$root/tmp/upgraded"
  configure
  # What only the newer release has goes before the older one returns.
  mapfile -t added < <(comm -13 <(printf '%s\n' "${old_packages[@]}" | sort) \
    <(printf '%s\n' "${packages[@]}" | sort))
  [ "${#added[@]}" -eq 0 ] || quietly in_chroot apt-get remove -y "${added[@]}"
  install "/tmp/old/*.deb"
  [ "$(version)" = "$old_version" ] || fail "$(version) is there after going back to $old_version"
  in_chroot dpkg --verify "${old_packages[@]}" || fail "going back changes the packages' files"
  in_chroot kovactl --simulate list >/dev/null
  keeps_configuration "an upgrade and going back"
  quietly in_chroot apt-get purge -y "${old_packages[@]}" "${added[@]}"
  remove_configuration
  quietly in_chroot apt-get autoremove --purge -y
  echo "  $old_version to $new_version and back"
fi

step "Installing what runs on a machine: all but the development files"
mapfile -t programs < <(printf '%s\n' "${packages[@]}" | grep -v -e '-dev$')
install "$(printf '/tmp/new/%s_*.deb ' "${programs[@]}")"
in_chroot kovactl --simulate list >"$root/tmp/list"
grep -q 'TRK7K VTIN 1' "$root/tmp/list" || fail "kovactl --simulate list: $(cat "$root/tmp/list")"
grep -v '^ ' "$root/tmp/list" | sed '/^$/d; s/^/  /'
status=0
in_chroot kovactl list >/dev/null 2>&1 || status=$?
[ "$status" -eq 3 ] || fail "kovactl without a device ends with $status, not 3"
in_chroot kovactl --simulate sixteen-modules list --family SDRAM >/dev/null

step "Compiling and running a host with kova-iot-dev"
install gcc libc6-dev pkgconf python3 "/tmp/new/kova-iot-dev_*.deb"
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

step "Running the exporter"
# shellcheck disable=SC2016
in_chroot sh -e -c '
  kova-exporter --simulate --web.listen-address 127.0.0.1:0 2>/tmp/exporter &
  for try in $(seq 50); do
    ! grep -q "listening on" /tmp/exporter || break
    sleep 0.2
  done
  address=$(sed -n "s/.*listening on //p" /tmp/exporter)
  python3 -c "import sys, time, urllib.request as u; time.sleep(1)
for path in sys.argv[2:]: print(path, len(u.urlopen(sys.argv[1] + path, timeout=5).read()))" \
    "${address%/}" /healthz /metrics /' >"$root/tmp/served" || fail "kova-exporter serves nothing"
sed 's/^/  /; s/$/ bytes/' "$root/tmp/served"

step "Setting up the service, installing again, removing"
configure
install --reinstall "$(printf '/tmp/new/%s_*.deb ' "${programs[@]}")"
keeps_configuration "installing again"
quietly in_chroot apt-get remove -y "${packages[@]}"
keeps_configuration "removing"

step "Purging everything"
quietly in_chroot dpkg --purge "${packages[@]}"
quietly in_chroot apt-get purge -y gcc pkgconf libc6-dev python3
quietly in_chroot apt-get autoremove --purge -y
remove_configuration
inventory >"$root/tmp/after"
diff "$root/tmp/before" "$root/tmp/after" >&2 || fail "the chroot is not as it was"
echo "The packages install, run and leave nothing behind on a bare Debian 12."
