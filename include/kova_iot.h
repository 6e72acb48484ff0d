/*
 * kova_iot.h: the C interface of the KOVA IoT module (libKovaIoT.so), valid C11 and C++.
 *
 * Rules that hold for every function here:
 *
 *  1. Calling order: KovaIoTInitialize first; then any calls in any number; KovaIoTUninitialize
 *     last. A call out of order is answered with a status, never with a crash.
 *  2. Threads: the module starts none and takes no locks. Serialise all calls; they may come
 *     from different threads as long as no two overlap. Every call runs on the caller's thread
 *     and lasts as long as the device library takes to answer.
 *  3. JSON values are jansson values. A value passed in stays the caller's: the module sets its
 *     content and keeps no reference to it. Strings handed to it must be UTF-8.
 *  4. Results are 32-bit statuses: 0 for success, otherwise one of the codes below, or for PoE
 *     ports, memory modules and the battery, the device library's own non-zero code as it came.
 *     No exception leaves a function, not even when memory runs out (IOT_STATUS_NOT_READY).
 *  5. NULL is accepted wherever a pointer is expected; what it leads to is told per function.
 */
#ifndef KOVA_IOT_H
#define KOVA_IOT_H

#include <jansson.h>
#include <stdint.h>

/* Release of the module that this header belongs to: major.minor.patch, semantic versioning. */
#define KOVA_IOT_VERSION "0.2.0"

/* Module identifier: the top byte of every item ID (0x14DDxxxx), and KovaIoTGetModuleID's result.
 */
#define KOVA_IOT_MODULE_ID UINT32_C(20)

/* Statuses; what each means stands in the table below. Read as int32_t, the failures are -3841,
 * -1025, -769, -1281, -1282, -1793, -1794 and -257. */
#define IOT_STATUS_SUCCESS UINT32_C(0x00000000)
#define IOT_STATUS_NOT_READY UINT32_C(0xFFFFF0FF)
#define IOT_STATUS_NOT_FOUND UINT32_C(0xFFFFFBFF)
#define IOT_STATUS_UNSUPPORTED UINT32_C(0xFFFFFCFF)
#define IOT_STATUS_READ_FAILED UINT32_C(0xFFFFFAFF)
#define IOT_STATUS_WRITE_FAILED UINT32_C(0xFFFFFAFE)
#define IOT_STATUS_INVALID_PARAMETER UINT32_C(0xFFFFF8FF)
#define IOT_STATUS_JSON_ERROR UINT32_C(0xFFFFF8FE)
#define IOT_STATUS_UNDEFINED_ITEM UINT32_C(0xFFFFFEFF)

/* Every status with its meaning, for programs that tell people: define ROW(status, meaning), such
 * as a case of a switch or a line of an array, and expand KOVA_IOT_STATUSES(ROW). */
#define KOVA_IOT_STATUSES(ROW)                                                                   \
  ROW(IOT_STATUS_SUCCESS, "success")                                                             \
  ROW(IOT_STATUS_NOT_READY,                                                                      \
      "not started; the family is not present (reads, and writes of PoE ports); the device "     \
      "library has no entry for this call; there is no document, or its target is no object; "   \
      "memory ran out")                                                                          \
  ROW(IOT_STATUS_NOT_FOUND,                                                                      \
      "at a start: no device library, no read entry in it, or no family present; at a read: no " \
      "such text, or a battery time that does not apply")                                        \
  ROW(IOT_STATUS_UNSUPPORTED, "no such family or item, or it cannot be written")                 \
  ROW(IOT_STATUS_READ_FAILED, "the device library failed to read; any accelerometer read")       \
  ROW(IOT_STATUS_WRITE_FAILED, "the device library failed to write, or refused the value")       \
  ROW(IOT_STATUS_INVALID_PARAMETER,                                                              \
      "a write of a null value or of a type that the item does not take")                        \
  ROW(IOT_STATUS_JSON_ERROR, "a JSON element or package could not be built")                     \
  ROW(IOT_STATUS_UNDEFINED_ITEM, "a memory-module item without an SPD field")

#ifdef __cplusplus
extern "C" {
#endif

/* The module is built with everything else hidden. */
#pragma GCC visibility push(default)

/* Loads the device library (/usr/lib/libKOVADevice.so, else /usr/lib64/libKOVADevice.so), asks
 * which families are present and builds the capability document: expect 200 to 600 device reads.
 * IOT_STATUS_SUCCESS: at least one family is present. (The document may still lack a group that
 *   could not be built; KovaIoTGetMDCapability tells whether there is one at all.)
 * IOT_STATUS_NOT_FOUND: no device library, no read entry in it, or no family present.
 * IOT_STATUS_NOT_READY: memory ran out, now or while the module was loaded; then it starts only
 *   after it has been unloaded and loaded again.
 * After a failure nothing is held and a later start may succeed. Starting again without a
 * shutdown in between replaces the running manager and its document. */
uint32_t KovaIoTInitialize(void);

/* Releases the document and the manager; always 0. May be called at any time, and twice. What a
 * host took from the document with KovaIoTGetMDCapability stays valid: it holds own references.
 * The device library stays mapped for the life of the process. */
uint32_t KovaIoTUninitialize(void);

/* Sets every key of the capability document into `target`, a JSON object of the caller's, which
 * gains references to the document's values: treat them as read-only and do not edit them. The
 * document is a snapshot of the start; read single items for fresh values.
 * IOT_STATUS_NOT_READY: `target` is NULL or no object, or there is no document. */
uint32_t KovaIoTGetMDCapability(json_t* target);

/* Reads item `id` into `value`, which the caller has made with the JSON type that the item has in
 * the document: a string for "sv", an integer for "bv", an integer or real for "v". jansson
 * refuses a change of type: a value of another type (or NULL) is left as it was and the status is
 * still 0. So it is with a text of the device that is not UTF-8. On a failure `value` is left as it
 * was.
 *
 * Accelerometer items (0x1415xxxx) answer IOT_STATUS_READ_FAILED even when they have filled the
 * scalar they were given. Preset the value to something the item cannot report (a real of 1e9, an
 * integer of -1): if it has changed the reading is good, if it is untouched the read failed.
 *
 * IOT_STATUS_NOT_READY: not started, or the item's family is not present.
 * IOT_STATUS_UNSUPPORTED: no such family, or no such kind of item in it.
 * IOT_STATUS_READ_FAILED, or the device library's own code: the device did not answer. */
uint32_t KovaIoTGetMDValue(uint32_t id, json_t* value);

/* Writes `value`, a JSON integer or real, to item `id`; `value` is only read. Ranges in the
 * document are advice: the value goes to the device as it is, and the device decides. That is so
 * for a controller or an accelerometer that is not present, too: the write is sent and may succeed.
 * The checks in order: IOT_STATUS_NOT_READY (not started, or the device library lacks an entry),
 * IOT_STATUS_INVALID_PARAMETER (`value` is NULL or neither integer nor real), of PoE ports
 * IOT_STATUS_NOT_READY (there are none), IOT_STATUS_UNSUPPORTED (read-only family or item), of a
 * PoE switch IOT_STATUS_INVALID_PARAMETER (it takes integers only), IOT_STATUS_WRITE_FAILED or the
 * device library's own code (the device refused). */
uint32_t KovaIoTSetMDValue(uint32_t id, json_t* value);

/* Any function pointer, cast: the module raises no events and never calls it. */
typedef void (*KovaIoTEventHandler)(void);

/* Accepts and ignores `handler`; always 0. */
uint32_t KovaIoTSetMDEventHandler(KovaIoTEventHandler handler);

/* KOVA_IOT_MODULE_ID; may be called at any time. */
uint32_t KovaIoTGetModuleID(void);

#pragma GCC visibility pop

#ifdef __cplusplus
}
#endif

#endif
