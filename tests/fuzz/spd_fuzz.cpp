// Decoding of memory modules from arbitrary SPD words. The first byte is the module's index.
#include <cmath>

#include "devices/sdram/sdram_func.h"
#include "devices/sdram/sdram_items.h"
#include "framework/text_number.h"
#include "tests/fuzz/fuzz_device.h"
#include "tests/fuzz/word_stream.h"

namespace {

void check(const catalogue::Row& row, Status status, const std::string& text) {
  FUZZ_EXPECT(status == IOT_STATUS_SUCCESS || status == IOT_STATUS_UNSUPPORTED ||
              status == word_stream::kDeviceFailure);
  FUZZ_EXPECT(!text.empty());
  FUZZ_EXPECT(std::isfinite(real_from_text(text)));
  if (status != IOT_STATUS_SUCCESS) {
    FUZZ_EXPECT(text == "N/A" || row.id == sdram::kModuleType);
  } else if (row.id == sdram::kPartNumber) {
    FUZZ_EXPECT(text.size() == 20);
  } else if (row.id == sdram::kSpecificData) {
    FUZZ_EXPECT(text.size() == 32);
  } else if (row.as.kind != catalogue::Kind::kText) {
    FUZZ_EXPECT(text.find_first_not_of("0123456789.e+-") == std::string::npos);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  word_stream::use(data, size);
  const unsigned int module = word_stream::take_byte();
  const SdRamFunc decoder(word_stream::read);
  for (const catalogue::Row& row : sdram::kSheet.rows) {
    std::string text;
    const Status status = decoder.GetRamIndexInfo(module, row.id, text);
    check(row, status, text);
  }
  std::uint32_t word = 0;
  word_stream::read(0, &word);
  FUZZ_EXPECT(!SdRamFunc::getManufacture(word).empty());
  std::string text;
  FUZZ_EXPECT(word == 0 ||
              decoder.GetRamIndexInfo(module, word | 0xFF, text) == IOT_STATUS_UNDEFINED_ITEM);
  return 0;
}
