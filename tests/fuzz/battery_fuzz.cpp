// Decoding of the battery from arbitrary register words.
#include <cmath>

#include "devices/sbattery/sbattery_func.h"
#include "devices/sbattery/sbattery_items.h"
#include "framework/text_number.h"
#include "tests/fuzz/fuzz_device.h"
#include "tests/fuzz/word_stream.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  word_stream::use(data, size);
  const SBatteryFunc decoder(word_stream::read);
  for (const catalogue::Row& row : sbattery::kSheet.rows) {
    std::string text = "what an earlier field has left";
    const Status status = decoder.GetBatteryInfo(row.id, text);
    FUZZ_EXPECT(status == IOT_STATUS_SUCCESS || status == IOT_STATUS_NOT_FOUND ||
                status == word_stream::kDeviceFailure);
    FUZZ_EXPECT(std::isfinite(real_from_text(text)));
    if (row.id == sbattery::kManufacturerName) {
      FUZZ_EXPECT(text.size() == 20);
    } else if (status != IOT_STATUS_SUCCESS) {
      FUZZ_EXPECT(text == "N/A");
    } else if (row.as.kind == catalogue::Kind::kText) {
      FUZZ_EXPECT(!text.empty() && text.find('\0') == std::string::npos);
    } else {
      FUZZ_EXPECT(text.find_first_not_of("0123456789.e+-") == std::string::npos);
    }
  }
  return 0;
}
