// A host that has chosen a locale of decimal commas and grouped digits, for C and C++ alike.
#include <optional>

#include "tests/faults/faulty_machine.h"
#include "tests/support/comma_locale.h"
#include "tests/support/documents.h"

namespace {

TEST_F(FaultyMachine, AHostsLocaleChangesNothing) {
  ASSERT_EQ(KovaIoTInitialize(), IOT_STATUS_SUCCESS);
  std::map<uint32_t, Reading> readings;
  for (const auto& [id, preset] : item_presets()) {
    readings[id] = read_item(id, preset.get());
  }
  stop();

  std::optional<CommaLocale> comma_locale(std::in_place);
  ASSERT_EQ(KovaIoTInitialize(), IOT_STATUS_SUCCESS);
  const JsonOwner document = host_document();
  for (const auto& [id, preset] : item_presets()) {
    EXPECT_EQ(read_item(id, preset.get()), readings.at(id)) << id;
  }
  comma_locale.reset();
  EXPECT_EQ(first_difference(document.get(), reference_document().get()), "");
}

}  // namespace
