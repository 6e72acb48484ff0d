#!/usr/bin/env bash
# Runs demo.sh and test.sh on bare Debian releases, as somebody does who has just cloned the source:
# each in a chroot of its own, in which they install what they need. Needs root and the package
# mirror that apt is configured for; takes some ten minutes a release.
# Usage: scripts/chroot_test.sh [--folder FOLDER] [RELEASE...]   (bookworm trixie)
set -euo pipefail
# shellcheck source=scripts/common.sh
. "$(dirname "$0")/common.sh"
# shellcheck source=scripts/chroot.sh
. "$repository/scripts/chroot.sh"

fail() {
  echo "chroot_test.sh: $*" >&2
  exit 1
}
place=/var/tmp
if [ "${1:-}" = --folder ]; then
  place=${2:?usage: scripts/chroot_test.sh [--folder FOLDER] [RELEASE...]}
  shift 2
fi
[ "$#" -gt 0 ] || set -- bookworm trixie
[ "$(id -u)" -eq 0 ] || fail "has to run as root"
scripts/install_dependencies.sh package-test

mkdir -p "$place"
work=$(mktemp -d "$place/kova-chroot-test.XXXXXX")
trap 'rm -rf --one-file-system "$work"' EXIT

for release; do
  echo "Making a bare Debian ($release) ..."
  make_chroot "$release" "$work/$release"
  mkdir "$root/source"
  # shellcheck disable=SC2016
  git ls-files -z --cached --others --exclude-standard --deduplicate |
    xargs -0 sh -c 'for file; do [ ! -e "$file" ] || printf "%s\0" "$file"; done' sh |
    tar --create --null --files-from=- | tar --extract --directory "$root/source"
  quietly in_chroot apt-get update
  quietly in_chroot /source/scripts/demo.sh
  echo "demo.sh runs on $release."
  quietly in_chroot sh -c '/source/scripts/test.sh >/tmp/log 2>&1 || { cat /tmp/log; exit 1; }'
  echo "test.sh runs on $release, with g++ $(in_chroot g++ -dumpversion): $(tail -n 1 "$root/tmp/log")"
  rm -rf --one-file-system "$root"
done
