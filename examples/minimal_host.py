#!/usr/bin/env python3
"""The smallest host, in Python: starts the module, prints the capability document, reads one
item, writes it back as it was, and shuts the module down.

    python3 minimal_host.py "$(pkg-config --variable=plugin kova-iot)"
"""
import ctypes
import json
import sys

# A setting of the power and ignition controller, in seconds: "v", an integer.
IGNITION_DELAY_ON = 0x14160711


def load(path):
    """The module, jansson and the C library in use, with the types of what is called below."""
    uint32, pointer = ctypes.c_uint32, ctypes.c_void_p
    module, jansson, libc = (ctypes.CDLL(name) for name in (path, "libjansson.so.4", None))
    for function, result, arguments in (
        (module.KovaIoTInitialize, uint32, []),
        (module.KovaIoTUninitialize, uint32, []),
        (module.KovaIoTGetMDCapability, uint32, [pointer]),
        (module.KovaIoTGetMDValue, uint32, [uint32, pointer]),
        (module.KovaIoTSetMDValue, uint32, [uint32, pointer]),
        (jansson.json_object, pointer, []),
        (jansson.json_integer, pointer, [ctypes.c_longlong]),
        (jansson.json_integer_value, ctypes.c_longlong, [pointer]),
        (jansson.json_dumps, pointer, [pointer, ctypes.c_size_t]),
        (jansson.json_delete, None, [pointer]),
        (libc.free, None, [pointer]),
    ):
        function.restype, function.argtypes = result, arguments
    return module, jansson, libc


def check(call, status):
    if status != 0:
        raise RuntimeError(f"{call}: status 0x{status:08X}")


def use(module, jansson, libc, document, value):
    check("KovaIoTGetMDCapability", module.KovaIoTGetMDCapability(document))
    text = jansson.json_dumps(document, 0)
    print(json.dumps(json.loads(ctypes.string_at(text)), indent=1))
    libc.free(text)

    # The value is an integer before the read: the module sets its content, never its type.
    check("KovaIoTGetMDValue", module.KovaIoTGetMDValue(IGNITION_DELAY_ON, value))
    print("ignition delay on:", jansson.json_integer_value(value), "s")
    check("KovaIoTSetMDValue", module.KovaIoTSetMDValue(IGNITION_DELAY_ON, value))
    print("written back")


def main(path):
    module, jansson, libc = load(path)
    check("KovaIoTInitialize", module.KovaIoTInitialize())
    document, value = jansson.json_object(), jansson.json_integer(0)
    try:
        use(module, jansson, libc, document, value)
    finally:
        # json_decref is a macro; with only our own reference left, this is what it comes to.
        jansson.json_delete(value)
        jansson.json_delete(document)
        module.KovaIoTUninitialize()


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(f"usage: {sys.argv[0]} /path/to/libKovaIoT.so")
    try:
        main(sys.argv[1])
    except (OSError, AttributeError, RuntimeError) as error:
        sys.exit(f"{sys.argv[0]}: {error}")
