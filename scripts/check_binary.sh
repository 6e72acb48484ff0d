#!/usr/bin/env bash
# Checks the built plug-in: exported functions, hardening, what it links; and that the interface
# header compiles alone. Usage: scripts/check_binary.sh BUILD_DIR
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

# The header needs nothing before it.
strict="-fsyntax-only -Wall -Wextra -Wpedantic -Werror"
for language in c:c11 c++:c++98 c++:c++20; do
  # shellcheck disable=SC2086
  "${CXX:-g++}" $strict -x "${language%:*}" -std="${language#*:}" include/kova_iot.h 2>&1 ||
    finding "the header does not compile alone as ${language#*:}"
done

exit "$findings"
