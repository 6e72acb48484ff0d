/*
 * Entry points of the recording stand-in, libKOVADeviceRecorder.so: a device library that opens
 * the real one, forwards every call to it unchanged, and writes down what it answered.
 *
 * 1. KOVA_RECORD_FILE names the file to record into. "%d" in it is the date, "%t" the time, both in
 *    UTC and of the recording's beginning ("2026-11-21", "144328"), "%h" the name of the host, "%p"
 *    the process ID, "%%" a percent sign. Without it, or when it is empty, calls are forwarded and
 *    nothing is recorded.
 *    KOVA_RECORD_LIBRARY names the device library to open, with its folder; without it that is
 *    /usr/lib/libKOVADevice.so or else /usr/lib64/libKOVADevice.so.
 *    KOVA_RECORD_REDACT lists codes and runs of codes, "0xA00011..0xA00015,0xB0001C", whose words
 *    are recorded as 0.
 *    KOVA_RECORD_STEP_MS, 1 to 86400000, records each call so many milliseconds after the one
 *    before, whatever the time: the same calls made to the replay then get the same answers.
 *    They are read once, by the first call of any of these functions.
 * 2. Results and stored words are the device library's own. The stand-in fails a call itself only
 *    when there is no device library to forward it to (RECORDER_STATUS_NO_LIBRARY).
 * 3. Any thread may call, at any time, but no signal handler.
 * 4. Whatever ends or prevents a recording is told on stderr, in one line, unless the host has
 *    asked KovaRecorderError() before: then telling is the host's business.
 */
#ifndef KOVA_DEVICE_RECORDER_H
#define KOVA_DEVICE_RECORDER_H

#include <stdint.h>

#define RECORDER_STATUS_NO_LIBRARY 0xE0000011u /* neither device library can be opened and used */

#ifdef __cplusplus
extern "C" {
#endif

/* Forwarded; what is answered is recorded. A read without a place for the value is only
 * forwarded. */
uint32_t KovaDeviceGetValue(uint32_t code, uint32_t* value);
uint32_t KovaDeviceSetValue(uint32_t code, uint32_t value);

/* 1 if there is a device library that calls are forwarded to, or else 0. */
uint32_t KovaRecorderHasLibrary(void);

/* Null while calls are recorded, or the one-line reason why they are not, or no more. The text
 * stays until the process ends. */
const char* KovaRecorderError(void);

/* The name that the recording gets, with its folder and without percent signs; null if nothing was
 * to be recorded. The text stays until the process ends. */
const char* KovaRecorderFile(void);

/* From now on calls are recorded at this time, in milliseconds after the start of the recording,
 * until the next call of this function. For hosts that take samples: a replay answers a sample as
 * a whole then, however long it took. Time does not run backwards: an earlier one is ignored. */
void KovaRecorderSetTime(uint64_t milliseconds);

/* Writes what is missing, and replaces the file. Calls are forwarded on, and recorded no more. 0,
 * or 1 if there was something wrong with the recording, which KovaRecorderError() tells. Without
 * this call the file is finished when the process exits, or when a file of the same name with
 * ".stop" behind it appears that is the process's user's, root's or the folder owner's. */
uint32_t KovaRecorderFinish(void);

/* Ends the recording and leaves the file of that name as it was. */
void KovaRecorderDiscard(void);

#ifdef __cplusplus
}
#endif

#endif
