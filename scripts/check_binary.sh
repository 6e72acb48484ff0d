#!/usr/bin/env bash
# Checks the built plug-in: exported functions, hardening, what it links, in which order its objects
# are made; and that the interface header compiles alone. The other programs and libraries: their
# hardening, and what these export.
# Usage: scripts/check_binary.sh BUILD_DIR
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

# What holds for any program and library that is shipped; of the plug-in it was asked above.
check_hardening() {
  local plugin=$1 dynamic segments # `finding` names the file by the first
  dynamic=$(readelf -dW "$plugin")
  segments=$(readelf -lW "$plugin")
  grep -q 'GNU_RELRO' <<<"$segments" || finding "no RELRO segment"
  grep -q '(FLAGS).*BIND_NOW' <<<"$dynamic" || finding "not bound immediately"
  grep -q 'TEXTREL' <<<"$dynamic" && finding "text relocations"
  grep -q 'INTERP' <<<"$segments" && ! grep -q '(FLAGS_1).*PIE' <<<"$dynamic" &&
    finding "loaded at a fixed address"
  grep -q 'GNU_STACK.* RW ' <<<"$segments" || finding "the stack is executable"
  grep -q 'LOAD.* RWE ' <<<"$segments" && finding "a segment is writable and executable"
  grep -q '__stack_chk_fail' <<<"$(nm -D --undefined-only "$plugin")" ||
    finding "no stack protector"
  grep -q -E '\((RPATH|RUNPATH)\)' <<<"$dynamic" && finding "a library search path"
  return 0
}

# check_exports LIBRARY MAP: exactly the functions of its export list.
check_exports() {
  local plugin=$1
  diff <(sed -n '/global:/,/local:/s/^ *\([A-Za-z_]*\);$/\1/p' "$2" | sort) \
    <(nm -D --defined-only "$plugin" | awk '$2 != "A" {print $3}' | sort) >&2 ||
    finding "exports differ from $2"
}

shipped=("$build/tools/kovactl/kovactl" "$build/tools/exporter/kova-exporter"
  "$build/simulator/libKOVADeviceSim.so" "$build/recorder/libKOVADeviceRecorder.so"
  "$build/tools/host/libKOVADeviceGuard.so")
for file in "${shipped[@]}"; do
  check_hardening "$file"
done
check_exports "$build/simulator/libKOVADeviceSim.so" simulator/kova_device_sim.map
check_exports "$build/recorder/libKOVADeviceRecorder.so" recorder/kova_device_recorder.map
check_exports "$build/tools/host/libKOVADeviceGuard.so" tools/host/session/device_guard.map
while IFS= read -r object; do
  grep -q 'IBT, SHSTK' <<<"$(readelf -nW "$object")" ||
    finding "no control-flow protection in $object"
done < <(find "$build/tools" "$build/simulator" "$build/recorder" -name '*.o')

# Their code is fortified, and that of the tools checks its bounds.
python3 - "$build/compile_commands.json" <<'PYTHON' || findings=1
import json, re, sys
wanted = {"tools": ["-D_FORTIFY_SOURCE=2", "-D_GLIBCXX_ASSERTIONS"],
          "simulator": ["-D_FORTIFY_SOURCE=2"], "recorder": ["-D_FORTIFY_SOURCE=2"]}
seen = set()
for entry in json.load(open(sys.argv[1])):
    made = re.search(r" -o (tools|simulator|recorder)/", entry["command"])
    if made:
        seen.add(made[1])
        missing = [flag for flag in wanted[made[1]] if flag not in entry["command"]]
        if missing or not re.search(r" -O[123s] ", entry["command"]):
            sys.exit(f"{entry['file']}: compiled without {' '.join(missing) or 'optimisation'}")
sys.exit(0 if len(seen) == len(wanted) else "no code of " + ", ".join(set(wanted) - seen))
PYTHON

# The header needs nothing before it.
strict="-fsyntax-only -Wall -Wextra -Wpedantic -Werror"
for language in c:c11 c++:c++98 c++:c++20; do
  # shellcheck disable=SC2086
  "${CXX:-g++}" $strict -x "${language%:*}" -std="${language#*:}" include/kova_iot.h 2>&1 ||
    finding "the header does not compile alone as ${language#*:}"
done

exit "$findings"
