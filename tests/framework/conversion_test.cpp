// Words of every kind to elements, published values and texts, and written numbers to words.
#include "framework/conversion.h"

#include <gtest/gtest.h>

#include "framework/json_owner.h"

namespace {

using catalogue::Kind;
using catalogue::Row;
using catalogue::Shape;
using catalogue::Word;

std::string text_of_json(const json_t* value) {
  char* text = json_dumps(value, JSON_ENCODE_ANY | JSON_REAL_PRECISION(15));
  std::string copy = text != nullptr ? text : "nothing";
  free(text);
  return copy;
}

std::string element_value(const Row& row, std::uint32_t raw) {
  json_t* made = nullptr;
  const Status status = catalogue::create_first_keys(row, "Item", row.id, raw, &made);
  const JsonOwner owner(made);
  EXPECT_EQ(status, made != nullptr ? IOT_STATUS_SUCCESS : IOT_STATUS_JSON_ERROR);
  return text_of_json(json_object_get(made, row.as.kind == Kind::kSwitch ? "bv" : "v"));
}

std::string single_read(const Shape& as, std::uint32_t raw) {
  const JsonOwner value(as.kind == Kind::kReal ? json_real(99) : json_integer(99));
  catalogue::publish(as, raw, value.get());
  const JsonOwner same(as.kind == Kind::kReal ? json_real(99) : json_integer(99));
  catalogue::publish_by_columns(as, raw, same.get());
  EXPECT_EQ(json_equal(value.get(), same.get()), 1);
  return text_of_json(value.get());
}

// Every column of a shape shows in what is published, whichever the family.
TEST(Conversion, AWordIsPublishedAsItsRowSays) {
  const struct {
    Shape as;
    std::uint32_t raw;
    const char *element, *single_read, *text;
  } cases[] = {
      {{.kind = Kind::kReal, .scale = 0.5}, 259, "129.5", "129.5", "129.5"},
      {{.kind = Kind::kReal, .divisor = 100, .offset = -273.15}, 29815, "25.0", "25.0", "25"},
      {{.kind = Kind::kReal, .word = Word::kSigned, .scale = 0.5}, ~0U, "-0.5", "-0.5", "-0.5"},
      {{.kind = Kind::kReal, .word = Word::kLow16Signed, .scale = 0.1},
       0xFFFF,
       "-0.1",
       "-0.1",
       "-0.1"},
      {{.kind = Kind::kReal, .word = Word::kLowByteInDocument}, 259, "3.0", "259.0", "259"},
      {{.kind = Kind::kReal, .through_text = true},
       1234567,
       "1234570.0",
       "1234570.0",
       "1.23457e+06"},
      {{.kind = Kind::kInteger}, ~0U, "-1", "4294967295", "4294967295"},
      {{.kind = Kind::kInteger, .through_text = true}, ~0U, "-1", "-1", "4294967295"},
      {{.kind = Kind::kInteger, .word = Word::kSigned}, ~0U, "-1", "-1", "-1"},
      {{.kind = Kind::kInteger, .word = Word::kLow16Signed}, 0x1FFFE, "-2", "-2", "-2"},
      {{.kind = Kind::kInteger, .word = Word::kLowByteInDocument}, 259, "3", "259", "259"},
      {{.kind = Kind::kInteger, .scale = 0.1, .truncated = true}, 259, "25", "25", "25"},
      {{.kind = Kind::kInteger, .word = Word::kLow16Signed, .scale = 0.1, .truncated = true},
       0xFFF1,
       "-1",
       "-1",
       "-1"},
      {{.kind = Kind::kSwitch}, 256, "1", "256", "256"},
      {{.kind = Kind::kSwitch, .normalised = true}, 256, "1", "1", "256"},
      {{.kind = Kind::kSwitch, .word = Word::kLowByteInDocument}, 256, "0", "256", "256"},
      {{.kind = Kind::kSwitch, .word = Word::kLow16Signed}, 0x10000, "0", "0", "0"},
      {{.kind = Kind::kText}, 7, "nothing", "99", "7"},
      {{.kind = Kind::kNone}, 7, "nothing", "99", "7"},
  };
  for (const auto& [as, raw, element, single, text] : cases) {
    SCOPED_TRACE(testing::Message() << "kind " << int(as.kind) << ", word " << int(as.word)
                                    << ", raw " << raw << ": " << element);
    const Row row{.id = 0x14160801, .as = as};
    EXPECT_EQ(element_value(row, raw), element);
    EXPECT_EQ(single_read(as, raw), single);
    EXPECT_EQ(catalogue::text_of(row, raw), text);
  }
}

TEST(Conversion, AWrittenNumberIsTheWordThatReadsSo) {
  const struct {
    Shape as;
    const char* value;
    std::uint32_t word;
  } cases[] = {
      {{.kind = Kind::kReal, .scale = 0.5}, "3", 6},
      {{.kind = Kind::kReal, .divisor = 10}, "11.99", 119},
      {{.kind = Kind::kReal, .word = Word::kSigned, .scale = 0.1}, "-0.1", ~0U},
      {{.kind = Kind::kReal, .word = Word::kLow16Signed, .scale = 0.1}, "-0.1", 0xFFFF},
      {{.kind = Kind::kReal}, "1e300", 0},
      {{.kind = Kind::kInteger}, "-1", ~0U},
      {{.kind = Kind::kInteger, .word = Word::kLow16Signed}, "-2", 0xFFFE},
      {{.kind = Kind::kInteger, .word = Word::kLowByteInDocument}, "259", 259},
      {{.kind = Kind::kInteger}, "2.0", 0},
      {{.kind = Kind::kSwitch}, "3", 1},
      {{.kind = Kind::kSwitch}, "-3", 0},
      {{.kind = Kind::kText}, "3", 0},
      {{.kind = Kind::kNone}, "3", 0},
  };
  for (const auto& [as, value, word] : cases) {
    const JsonOwner written(json_loads(value, JSON_DECODE_ANY, nullptr));
    EXPECT_EQ(catalogue::word_of(as, written.get()), word) << int(as.kind) << ' ' << value;
  }
}

}  // namespace
