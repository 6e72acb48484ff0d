// Descriptions that would take far more memory than their text: what they may take in all.
#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "simulator/description.h"
#include "simulator/device_code.h"

namespace {

constexpr long kMaxKiB = 64 << 10;

std::string repeated(const std::string& text, int count) {
  std::string all;
  for (int i = 0; i < count; ++i) {
    all += (i == 0 ? "" : ",") + text;
  }
  return all;
}

// Moments in ascending time, one a line: `[0,REST],` ...
std::string moments(int count, const std::string& rest) {
  std::string all;
  for (int i = 0; i < count; ++i) {
    all += (i == 0 ? "[" : ",\n[") + std::to_string(i) + "," + rest + "]";
  }
  return all;
}

// A member for each of the first long runs of codes: `"0x..": CONTENT`, ...
std::string for_runs(int first, int end, const std::string& dots, const std::string& content) {
  std::string all;
  for (int i = first; i < end; ++i) {
    const std::uint32_t code = static_cast<std::uint32_t>(i) << 12U;
    all += (i == first ? "\"" : ",\"") + kova_sim::format_hex(code) +
           (dots.empty() ? "" : dots + kova_sim::format_hex(code + 0xFFF)) + "\": " + content;
  }
  return all;
}

// The most memory that the process has had since `forget_peak`, in KiB.
long peak_kib() {
  std::ifstream status("/proc/self/status");
  std::string key;
  long kib = 0;
  while (status >> key && key != "VmHWM:") {
  }
  status >> kib;
  return kib;
}

long forget_peak() {
  std::ofstream("/proc/self/clear_refs") << 5;
  return peak_kib();
}

struct Row {
  const char* why;
  std::string text;
  std::string reason;  // none: accepted
  std::string base = {};
};

TEST(DescriptionLimits, MemoryIsBoundedWhateverTheText) {
  const std::string trace = "{\"trace\": [" + moments(25000, "7") + "]}";
  const std::string too_large = "with this the description takes more than 64 MiB";
  const Row rows[] = {
      {"a long trace for a long run", "{\"codes\": {\"0x0..0xFFF\": " + trace + "}}", ""},
      {"a long note for a long run",
       "{\"codes\": {\"0x0..0xFFF\": {\"note\": \"" + std::string(4 << 20, 'n') + "\"}}}", ""},
      {"many long runs of nothing", "{\"codes\": {" + for_runs(0, 60000, "..", "null") + "}}", ""},
      {"an end for many codes with one trace",
       R"({"base": "b", "trace": {"then": "wrap", "seconds": 99}})", "",
       "{\"codes\": {\"0x0..0xFFF\": " + trace + "}}"},
      {"copies of writes that change much",
       "{\"base\": \"b\", \"copy\": {" + for_runs(1, 16, "", "\"0x0..0xFFF\"") + "}}", "",
       "{\"codes\": {\"0x0..0xFFF\": {\"value\": 1, \"write\": {\"changes\": [" +
           repeated("\"0x0\"", 64) + "]}}, \"0x1000..0x1040\": 1}}"},
      {"a recording of eight hours",
       "{\"trace\": [\n" +
           moments(28800, R"("0x820000",{"status":5},"0x820001",40000,"0x820002",40001)") + "]}",
       ""},
      {"values without number", "{\"note\": [" + repeated("[]", 5000000) + "]}",
       "m:1: " + too_large},
      {"objects in a moment",
       "{\"trace\": [\n[0,\"0x1\",5],\n[1," + repeated("{}", 3000000) + "]]}", "m:3: " + too_large},
      {"one code in a tight loop",
       "{\"trace\": [\n" + moments(400000, "\"0x1\",1,2,3,4,5,6") + "]}",
       "m:231742: trace[231740][3]: " + too_large},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.why);
    const long before = forget_peak();
    const auto result =
        kova_sim::parse_description(row.text, "m", [&](const std::string&) { return row.base; });
    EXPECT_EQ(result.error.rfind(row.reason, 0), 0U) << result.error;
    EXPECT_EQ(result.machine.has_value(), row.reason.empty()) << result.error;
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    EXPECT_LT(peak_kib() - before, kMaxKiB + (kMaxKiB >> 3)) << row.text.size();
#else
    static_cast<void>(before);
#endif
  }
}

}  // namespace
