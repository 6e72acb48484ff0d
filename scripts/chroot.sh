# shellcheck shell=bash
# Helpers for scripts that try something on a bare Debian release: a chroot that they source this
# for, made by debootstrap. Needs root and the package mirror that apt is configured for.

# Makes a bare RELEASE (bookworm, trixie) in the folder ROOT, which in_chroot then works in.
make_chroot() {
  local release=$1 mirror
  root=$2
  # shellcheck disable=SC2016
  mirror=$(apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' 'Origin: Debian' |
    grep -v security | head -n 1)
  if [ -z "$mirror" ]; then
    echo "apt is configured for no mirror of Debian" >&2
    return 1
  fi
  quietly debootstrap --variant=minbase "$release" "$root" "$mirror"
}

# Runs a command in the chroot, with a /proc and terminals that are gone with the command.
in_chroot() {
  # shellcheck disable=SC2016
  unshare --mount --pid --fork --root="$root" --mount-proc \
    /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 \
    DEBIAN_FRONTEND=noninteractive \
    sh -c 'mount -t devpts -o ptmxmode=666 devpts /dev/pts && exec "$@"' sh "$@"
}
