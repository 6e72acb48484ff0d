#!/usr/bin/env bash
# Checks the built plug-in: exported functions, hardening, what it links, in which order its objects
# are made; and that the interface header compiles alone. Usage: scripts/check_binary.sh BUILD_DIR
# Prints every finding and exits 1 when there is one; prints nothing otherwise.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:?usage: check_binary.sh BUILD_DIR}
plugin=$build/module/libKovaIoT.so
objects=$build/module/CMakeFiles/kova_module_objects.dir

findings=0
finding() {
  echo "$plugin: $*" >&2
  findings=1
}

# The names of the plug-in's objects in the order in which they are made: each then asks for its end.
objects_made() {
  local work
  work=$(mktemp -d)
  "${CC:-gcc}" -shared -fPIC -x c - -o "$work/ends.so" <<'C'
#define _GNU_SOURCE
#include <dlfcn.h>
#include <stdio.h>
#include <string.h>
int __cxa_atexit(void (*end)(void *), void *object, void *library) {
  int (*next)(void (*)(void *), void *, void *) = dlsym(RTLD_NEXT, "__cxa_atexit");
  Dl_info of;
  if (object && dladdr(object, &of) && strstr(of.dli_fname, "libKovaIoT.so"))
    dprintf(1, "%016lx\n", (unsigned long)((char *)object - (char *)of.dli_fbase));
  return next(end, object, library);
}
C
  nm -C "$plugin" | sed 's/\[abi:cxx11\]//; s/KovaDevice:://' >"$work/names"
  LD_PRELOAD=$work/ends.so python3 -c 'import ctypes, sys; ctypes.CDLL(sys.argv[1])' "$plugin" |
    awk 'NR == FNR { if ($2 ~ /[bBdDrR]/) name[$1] = $3; next }
         { printf "%s%s", (FNR > 1 ? " " : ""), name[$1] }' "$work/names" -
  rm -r "$work"
}

dynamic=$(readelf -dW "$plugin")
segments=$(readelf -lW "$plugin")
imports=$(nm -D --undefined-only "$plugin")

# Exactly the functions of the export list, and nothing else.
wanted=$(sed -n '/global:/,/local:/s/^ *\([A-Za-z]*\);$/\1/p' module/kova_iot.map | sort)
exported=$(nm -D --defined-only "$plugin" | awk '{print $3}' | sort)
[ "$(wc -w <<<"$wanted")" -eq 7 ] || finding "the export list does not name seven functions"
[ "$wanted" = "$exported" ] || finding "exports differ from module/kova_iot.map:" \
  "$(diff <(echo "$wanted") <(echo "$exported") | tr '\n' ' ')"

# Read-only relocations, bound before the first call.
grep -q 'GNU_RELRO' <<<"$segments" || finding "no RELRO segment"
grep -q '(FLAGS).*BIND_NOW' <<<"$dynamic" || finding "not bound immediately"
grep -q 'TEXTREL' <<<"$dynamic" && finding "text relocations"

# Nothing is both writable and executable.
grep -q 'GNU_STACK.* RW ' <<<"$segments" || finding "the stack is executable"
grep -q 'LOAD.* RWE ' <<<"$segments" && finding "a segment is writable and executable"

grep -q '__stack_chk_fail' <<<"$imports" || finding "no stack protector"

# None of the calls that the module makes needs a fortified variant, so only the flag shows.
python3 - "$build/compile_commands.json" <<'PYTHON' || finding "not all code is fortified"
import json, re, sys
module = [entry["command"] for entry in json.load(open(sys.argv[1]))
          if "kova_module_objects.dir" in entry["command"]]
fortified = [c for c in module if "-D_FORTIFY_SOURCE=2" in c and re.search(r" -O[123s] ", c)]
sys.exit(0 if module and len(fortified) == len(module) else 1)
PYTHON

# Control-flow protection. The system's start files carry no such note, so the linked file cannot;
# our objects must, and each entry point must begin with a landing pad.
while IFS= read -r object; do
  readelf -nW "$object" | grep -q 'IBT, SHSTK' || finding "no control-flow protection in $object"
done < <(find "$objects" -name '*.o')
pads=$(objdump -d --no-show-raw-insn "$plugin" | grep -A1 '<KovaIoT[A-Za-z]*>:$' | grep -c endbr64 || true)
[ "$pads" -eq 7 ] || finding "only $pads entry points begin with endbr64"

# jansson and the C++ runtime are the host's own; a plug-in has a plain name and no search path.
for library in libjansson.so.4 libstdc++.so.6; do
  grep -qF "Shared library: [$library]" <<<"$dynamic" || finding "does not link $library"
done
grep '(SONAME)' <<<"$dynamic" | grep -v '\[libKovaIoT.so\]' && finding "a versioned name"
grep -q -E '\((RPATH|RUNPATH)\)' <<<"$dynamic" && finding "a library search path"

# What is made while it is loaded is made in this order. A family that is not among these, and tells
# no place, comes after them.
wanted='CONST_HWM CONST_TEMP CONST_FAN Device_PoE::NAME_DEVICE'
for family in PIC TRK7000 GSensor; do
  for object in NAME_DEVICE device_name_map unit_map desc_map kova_id_map bound_map; do
    wanted+=" Device_$family::$object"
  done
done
for family in SDRAM SBATTERY; do
  wanted+=" Device_$family::device_name_map Device_$family::unit_map Device_$family::bound_map"
done
made=$(objects_made)
[[ $made == "$wanted"* ]] || finding "its objects are made in another order: $made"

# The header needs nothing before it.
strict="-fsyntax-only -Wall -Wextra -Wpedantic -Werror"
for language in c:c11 c++:c++98 c++:c++20; do
  # shellcheck disable=SC2086
  "${CXX:-g++}" $strict -x "${language%:*}" -std="${language#*:}" include/kova_iot.h 2>&1 ||
    finding "the header does not compile alone as ${language#*:}"
done

exit "$findings"
