// Single reads and writes of every kind, each beside its floor: the same number of device calls
// and one jansson call, which is the least that any module could do.
#include <benchmark/benchmark.h>

#include <string>

#include "bench/allocation_count.h"
#include "bench/instant_device.h"
#include "framework/device_library.h"
#include "framework/json_owner.h"
#include "include/kova_iot.h"

namespace {

enum class Kind { kInteger, kReal, kText };

struct Item {
  const char* name;
  std::uint32_t id;
  Kind kind;
  double written = 0;
};

constexpr Item kReads[] = {
    {"poe/voltage", 0x14140201, Kind::kReal},
    {"poe/current", 0x14140403, Kind::kReal},
    {"poe/detect", 0x14140802, Kind::kInteger},
    {"poe/class", 0x14140904, Kind::kInteger},
    {"poe/power", 0x14140B01, Kind::kInteger},
    {"pic/setting", 0x14160711, Kind::kInteger},
    {"pic/voltage-setting", 0x14160716, Kind::kReal},
    {"pic/status", 0x14160802, Kind::kInteger},
    {"pic/input-voltage", 0x14160803, Kind::kReal},
    {"board/temperature", 0x14170112, Kind::kInteger},
    {"board/fan", 0x14170314, Kind::kInteger},
    {"gsensor/mode", 0x14150711, Kind::kInteger},
    {"gsensor/offset", 0x14150721, Kind::kReal},
    {"gsensor/rate", 0x14150731, Kind::kInteger},
    {"gsensor/range", 0x14150741, Kind::kInteger},
    {"gsensor/reading", 0x14150902, Kind::kReal},
    {"pic/firmware", 0x14160601, Kind::kText},
    {"pic/battery-type", 0x14160604, Kind::kText},
    {"board/ec-type", 0x14170602, Kind::kText},
    {"memory/size", 0x14180301, Kind::kInteger},
    {"memory/voltage", 0x14180601, Kind::kReal},
    {"memory/temperature", 0x14180901, Kind::kReal},
    {"memory/type", 0x14180101, Kind::kText},
    {"memory/module-type", 0x14180201, Kind::kText},
    {"memory/week-year", 0x14180801, Kind::kText},
    {"memory/manufacturer", 0x14180B01, Kind::kText},
    {"memory/part-number", 0x14181101, Kind::kText},
    {"memory/specific-data", 0x14182101, Kind::kText},
    {"battery/voltage", 0x14190700, Kind::kInteger},
    {"battery/temperature", 0x14191100, Kind::kReal},
    {"battery/status", 0x14190100, Kind::kText},
    {"battery/name", 0x14190200, Kind::kText},
    {"battery/date", 0x14190300, Kind::kText},
    {"battery/time", 0x14190E00, Kind::kText},
};

// The accelerometer's writes and the controller's differ in how the number is scaled.
constexpr Item kWrites[] = {
    {"poe/power-unchanged", 0x14140B01, Kind::kInteger, 1},
    {"poe/power-switched", 0x14140B01, Kind::kInteger, 0},
    {"pic/setting", 0x14160711, Kind::kInteger, 10},
    {"pic/voltage-setting", 0x14160716, Kind::kReal, 11.5},
    {"pic/switch", 0x1416071A, Kind::kInteger, 1},
    {"gsensor/mode", 0x14150711, Kind::kInteger, 1},
    {"gsensor/offset", 0x14150721, Kind::kReal, 0.25},
    {"gsensor/rate", 0x14150731, Kind::kInteger, 10},
};

class StartedModule {
 public:
  StartedModule() {
    instant_device::become_machine(2, 8);
    KovaIoTInitialize();
  }
  ~StartedModule() { KovaIoTUninitialize(); }
  StartedModule(const StartedModule&) = delete;
  StartedModule& operator=(const StartedModule&) = delete;
};

JsonOwner json_value(Kind kind, double number) {
  switch (kind) {
    case Kind::kInteger:
      return JsonOwner(json_integer(static_cast<json_int_t>(number)));
    case Kind::kReal:
      return JsonOwner(json_real(number));
    default:
      return JsonOwner(json_string(""));
  }
}

// Values that no item reads as: an item that still holds one has not been read.
JsonOwner unread_value(Kind kind) {
  return json_value(kind, -1e9);
}

void read_item(benchmark::State& state, const Item& item) {
  const StartedModule module;
  const JsonOwner value = unread_value(item.kind);
  measure(state, [&] { return KovaIoTGetMDValue(item.id, value.get()); });
  if (json_equal(value.get(), unread_value(item.kind).get()) != 0) {
    state.SkipWithError("the item was not read");
  }
}

void write_item(benchmark::State& state, const Item& item) {
  const StartedModule module;
  const JsonOwner value = json_value(item.kind, item.written);
  std::uint32_t status = IOT_STATUS_SUCCESS;
  measure(state, [&] { return status |= KovaIoTSetMDValue(item.id, value.get()); });
  if (status != IOT_STATUS_SUCCESS) {
    state.SkipWithError("the item was not written");
  }
}

template <typename JsonCall>
void measure_floor(benchmark::State& state, std::uint64_t device_calls, const JsonCall& json_call) {
  ReadEntry entry = &KovaDeviceGetValue;
  benchmark::DoNotOptimize(entry);
  measure(state, [&] {
    std::uint32_t word = 0;
    for (std::uint64_t call = 0; call < device_calls; ++call) {
      entry(0x200000, &word);
    }
    return json_call(word);
  });
}

template <typename ModuleCall>
std::uint64_t device_calls_of(const ModuleCall& call) {
  const std::uint64_t before = instant_device::calls;
  instant_device::counting = true;
  call();
  instant_device::counting = false;
  return instant_device::calls - before;
}

void read_floor(benchmark::State& state, const Item& item) {
  const StartedModule module;
  const JsonOwner owner = unread_value(item.kind);
  json_t* value = owner.get();
  const auto calls = device_calls_of([&] { KovaIoTGetMDValue(item.id, value); });
  if (item.kind == Kind::kInteger) {
    measure_floor(state, calls, [=](std::uint32_t word) { return json_integer_set(value, word); });
  } else if (item.kind == Kind::kReal) {
    measure_floor(state, calls, [=](std::uint32_t word) { return json_real_set(value, word); });
  } else {
    const std::string text = json_string_value(value);
    measure_floor(state, calls,
                  [&](std::uint32_t /*word*/) { return json_string_set(value, text.c_str()); });
  }
}

void write_floor(benchmark::State& state, const Item& item) {
  const StartedModule module;
  const JsonOwner value = json_value(item.kind, item.written);
  const auto calls = device_calls_of([&] { KovaIoTSetMDValue(item.id, value.get()); });
  if (item.kind == Kind::kReal) {
    measure_floor(state, calls,
                  [&](std::uint32_t word) { return json_real_value(value.get()) + word; });
  } else {
    measure_floor(state, calls,
                  [&](std::uint32_t word) { return json_integer_value(value.get()) + word; });
  }
}

using Benchmark = void (*)(benchmark::State&, const Item&);

template <std::size_t count>
void add(const std::string& what, const Item (&items)[count], Benchmark item_benchmark,
         Benchmark floor) {
  for (const Item& item : items) {
    const std::string name = what + "/" + item.name;
    benchmark::RegisterBenchmark(name.c_str(), item_benchmark, item);
    benchmark::RegisterBenchmark(("floor/" + name).c_str(), floor, item);
  }
}

[[maybe_unused]] const bool added = [] {
  add("read", kReads, read_item, read_floor);
  add("write", kWrites, write_item, write_floor);
  return true;
}();

}  // namespace
