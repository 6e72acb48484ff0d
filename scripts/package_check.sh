#!/usr/bin/env bash
# Checks the packages of build/packages/: that a second build of the same source, in another folder
# and under another locale, time zone and umask, makes the same ones to the byte; and that the RPMs
# install into a root of their own, run from there, and leave nothing behind.
#   scripts/package.sh && scripts/package_check.sh
set -euo pipefail
# shellcheck source=scripts/common.sh
. "$(dirname "$0")/common.sh"

fail() {
  echo "package_check.sh: $*" >&2
  exit 1
}
[ "$#" -eq 0 ] || fail "usage: scripts/package_check.sh"
compgen -G "build/packages/*.rpm" >/dev/null || fail "no packages: run scripts/package.sh first"
scripts/install_dependencies.sh package
as_root=()
[ "$(id -u)" -eq 0 ] || as_root=(sudo)

work=$(mktemp -d)
trap '${as_root[@]+"${as_root[@]}"} rm -rf --one-file-system "$work"' EXIT

check_rpms() {
  local root=$work/root rpm packages missing
  rpm=(${as_root[@]+"${as_root[@]}"} rpm --root "$root")
  mkdir "$root"
  "${rpm[@]}" --initdb
  # The system's own libraries are not in the new root; what our packages need of each other is.
  missing=$("${rpm[@]}" --install --test --force-debian build/packages/*.rpm 2>&1 || true)
  grep '^[[:space:]]*kova-iot' <<<"$missing" >&2 && fail "no package provides this"
  # Nor is its shell: the packages' scripts cannot run.
  quietly "${rpm[@]}" --install --nodeps --noscripts --force-debian build/packages/*.rpm
  mapfile -t packages < <("${rpm[@]}" --query --all --qf '%{NAME}\n')
  "${rpm[@]}" --verify --all --nodeps || fail "the installed files are not the packages'"
  # Agents on such systems look there, as the module does for its device library.
  [ -e "$root/usr/lib64/libKovaIoT.so" ] || fail "the plug-in is not in /usr/lib64"
  "$root/usr/bin/kovactl" --simulate sixteen-modules list --family SDRAM >"$work/list" ||
    fail "kovactl does not find its module, simulator or machines"
  grep -q '^SDRAM: SDRAM15' "$work/list" || fail "kovactl listed: $(cat "$work/list")"
  "${rpm[@]}" --erase --nodeps --noscripts "${packages[@]}"
  [ -z "$(find "$root" -path "$root/var/lib/rpm" -prune -o -name '*[kK]ova*' -print)" ] ||
    fail "files are left: $(find "$root" -name '*[kK]ova*')"
  echo "${#packages[@]} RPMs install, run and leave nothing behind."
}

# The working tree, changes and all, with the commit that dates it.
copy_source() {
  git clone --quiet --no-hardlinks . "$1"
  git ls-files -z --cached --others --exclude-standard --deduplicate |
    while IFS= read -r -d '' file; do
      if [ -e "$file" ]; then
        cp --parents -P "$file" "$1"
      else
        rm -f "$1/$file"
      fi
    done
}

check_second_build() {
  local copy=$work/a-second-longer-folder
  copy_source "$copy"
  (
    cd "$copy"
    umask 077
    unset SOURCE_DATE_EPOCH
    quietly env TZ=Asia/Tokyo LC_ALL=C.UTF-8 LANG=C.UTF-8 scripts/package.sh
  )
  (cd build/packages && sha256sum -- *) >"$work/first"
  (cd "$copy/build/packages" && sha256sum -- *) >"$work/second"
  diff "$work/first" "$work/second" >&2 || fail "a second build makes other packages"
  echo "A second build makes the same $(wc -l <"$work/first") files to the byte."
}

check_rpms
check_second_build
