/*
 * The smallest host, in C11: starts the module, prints the capability document, reads one item,
 * writes it back as it was, and shuts the module down. To build and to run it:
 *   cc -std=c11 minimal_host.c -o minimal_host $(pkg-config --cflags --libs kova-iot)
 *   ./minimal_host "$(pkg-config --variable=plugin kova-iot)"
 */
#include <dlfcn.h>
#include <inttypes.h>
#include <kova_iot.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* A setting of the power controller, in seconds: "v", an integer. */
static const uint32_t ignition_delay_on = UINT32_C(0x14160711);
static uint32_t (*initialize)(void);
static uint32_t (*uninitialize)(void);
static uint32_t (*get_capability)(json_t*);
static uint32_t (*get_value)(uint32_t, json_t*);
static uint32_t (*set_value)(uint32_t, json_t*);

/* ISO C has no cast from dlsym's object pointer to a function pointer; POSIX makes them alike. */
static int resolve(void* module, const char* name, void* function) {
  void* symbol = dlsym(module, name);
  memcpy(function, &symbol, sizeof symbol);
  return symbol != NULL;
}

static int load(const char* path) {
  void* module = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  return module != NULL && resolve(module, "KovaIoTInitialize", &initialize) &&
         resolve(module, "KovaIoTUninitialize", &uninitialize) &&
         resolve(module, "KovaIoTGetMDCapability", &get_capability) &&
         resolve(module, "KovaIoTGetMDValue", &get_value) &&
         resolve(module, "KovaIoTSetMDValue", &set_value);
}

static int failed(const char* call, uint32_t status) {
  if (status != IOT_STATUS_SUCCESS) {
    fprintf(stderr, "%s: status 0x%08" PRIX32 "\n", call, status);
  }
  return status != IOT_STATUS_SUCCESS;
}

static int use(json_t* document, json_t* value) {
  /* The value is an integer before the read: the module sets its content, never its type. */
  if (failed("KovaIoTGetMDCapability", get_capability(document)) ||
      json_dumpf(document, stdout, JSON_INDENT(1)) != 0 ||
      failed("KovaIoTGetMDValue", get_value(ignition_delay_on, value))) {
    return EXIT_FAILURE;
  }
  printf("\nignition delay on: %" JSON_INTEGER_FORMAT " s\n", json_integer_value(value));
  if (failed("KovaIoTSetMDValue", set_value(ignition_delay_on, value))) {
    return EXIT_FAILURE;
  }
  puts("written back");
  return EXIT_SUCCESS;
}

int main(int argc, char** argv) {
  if (argc != 2) {
    fprintf(stderr, "usage: %s /path/to/libKovaIoT.so\n", argv[0]);
    return EXIT_FAILURE;
  }
  if (!load(argv[1])) {
    fprintf(stderr, "cannot load the module: %s\n", dlerror());
    return EXIT_FAILURE;
  }
  if (failed("KovaIoTInitialize", initialize())) {
    return EXIT_FAILURE;
  }
  json_t* document = json_object();
  json_t* value = json_integer(0);
  const int result = use(document, value);
  json_decref(value);
  json_decref(document);
  uninitialize();
  return result;
}
