/*
 * Entry points of the simulated device library, libKOVADeviceSim.so.
 *
 * 1. The machine that answers is described by the JSON file that the environment variable
 *    KOVA_SIM_MACHINE names when the first of these functions is called, by its path or, if it is
 *    a shipped one, by its name ("slow-bus"); without it, or when it is empty, the built-in
 *    machine answers. The description is read once.
 * 2. Results are 0 for success. Failures of the simulator itself are the SIM_STATUS_* values;
 *    a description may give any other non-zero status to any call.
 * 3. Calls of several threads are answered one after the other. Hosts must serialise them all the
 *    same: the real library asks for that.
 * 4. A refused description is reported on stderr, one line, by the first read or write, unless
 *    the host has asked KovaSimulatorError() before: then reporting is the host's business.
 */
#ifndef KOVA_DEVICE_SIM_H
#define KOVA_DEVICE_SIM_H

#include <stdint.h>

#define SIM_STATUS_NOT_DESCRIBED 0xE0000001u   /* no such code, or it has no value to read */
#define SIM_STATUS_OUT_OF_LIMITS 0xE0000002u   /* written value outside the accepted limits */
#define SIM_STATUS_READ_ONLY 0xE0000003u       /* the code is described, but not writable */
#define SIM_STATUS_NULL_POINTER 0xE0000004u    /* read without a place for the value */
#define SIM_STATUS_BAD_DESCRIPTION 0xE0000005u /* description refused: nothing is answered */
#define SIM_STATUS_INTERNAL 0xE0000006u        /* out of memory */

#ifdef __cplusplus
extern "C" {
#endif

/* Reads the raw 32-bit word of `code` into `*value`. On failure `*value` is left alone, unless
 * the description says that this failing read stores one. */
uint32_t KovaDeviceGetValue(uint32_t code, uint32_t* value);

/* Writes the raw 32-bit word `value` to `code`. */
uint32_t KovaDeviceSetValue(uint32_t code, uint32_t value);

/* Null when the description was accepted, otherwise the one-line reason (file, line or key,
 * what is wrong). The text belongs to the library and stays until it is unloaded. */
const char* KovaSimulatorError(void);

/* From now on every call is answered as at this time, in milliseconds after the machine's start,
 * until the next call of this function; a "clock" and the delays of the description count no more.
 * For hosts that walk through a recording faster than it was made. */
void KovaSimulatorSetTime(uint64_t milliseconds);

/* How long the recording lasts, in milliseconds, that the machine is or builds on; 0 if it is
 * none, or the description was refused. */
uint64_t KovaSimulatorRecordedTime(void);

/* Tells `tell` of each moment from which on a code is answered by another answer of its trace, in
 * order of code and then of time: code, milliseconds after the machine's start. Traces that begin
 * again are told of once. `context` is handed on. `tell` must call none of these functions. */
void KovaSimulatorTellMoments(void (*tell)(void* context, uint32_t code, uint64_t milliseconds),
                              void* context);

/* 1 if the words of this code were blanked when the machine was recorded: a successful read stores
 * 0, which the device never said. Otherwise, and for a refused description, 0. */
uint32_t KovaSimulatorIsRedacted(uint32_t code);

#ifdef __cplusplus
}
#endif

#endif
