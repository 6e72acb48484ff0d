// Reads items, and makes out what an answer means.
#include "tools/host/values/reading.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <set>
#include <utility>

#include "include/kova_iot.h"
#include "tools/host/model/item_data.h"

namespace kova_host {
namespace {

// Accelerometer reads into a scalar report a failure even when they have filled it.
bool status_allows_value(uint32_t id, uint32_t status) {
  const FamilyData* family = family_of(id);
  return status == IOT_STATUS_SUCCESS || (family != nullptr && status == family->status_when_read);
}

// Memory modules list fields that only one series of modules carries, and the battery times that
// an idle battery does not have. The device answered; there is just nothing to show.
bool does_not_apply(const Item& item, uint32_t status) {
  const FamilyData* family = family_of(item.id);
  return item.kind.has_value() && family != nullptr && status == family->status_without_value;
}

Reading reading_of(const Item& item, ItemAnswer answer) {
  Reading reading;
  reading.status = answer.status;
  reading.reason = std::move(answer.reason);
  if (item.missing || !reading.reason.empty()) {
    return reading;
  }
  const auto* text = std::get_if<std::string>(&answer.value);
  if (does_not_apply(item, reading.status) || (text != nullptr && *text == "N/A")) {
    reading.state = Reading::State::absent;
  } else if (status_allows_value(item.id, reading.status) && answer.value.index() != 0) {
    reading = {Reading::State::good, IOT_STATUS_SUCCESS, std::move(answer.value)};
  }
  return reading;
}

// The module leaves a value of the wrong JSON type as it is, so the kinds can be tried in turn.
Reading read_of_any_kind(const Session& session, const Item& item) {
  Reading reading;
  for (const ValueKind kind : {ValueKind::integer, ValueKind::real, ValueKind::text}) {
    reading = reading_of(item, session.read({item.id, kind}));
    if (reading.state != Reading::State::failed || !status_allows_value(item.id, reading.status)) {
      break;
    }
  }
  return reading;
}

bool is_text_of_words(const Item& item, const Reading& reading) {
  return item.facts.role == Role::identity && item.facts.codes.size() > 1 &&
         std::holds_alternative<std::string>(reading.value);
}

// Texts alone are blanked, and those that a blank takes along.
void blank_redacted(const Session& session, const std::vector<Item>& texts, Readings& readings) {
  std::vector<uint32_t> codes;
  for (const Item& item : texts) {
    codes.insert(codes.end(), item.facts.codes.begin(), item.facts.codes.end());
  }
  const std::set<uint32_t> redacted = session.redacted(codes);
  for (const Item& item : texts) {
    if (std::any_of(item.facts.codes.begin(), item.facts.codes.end(),
                    [&](uint32_t code) { return redacted.contains(code); })) {
      readings.at(item.id) = {Reading::State::absent, IOT_STATUS_SUCCESS, {}};
      readings.at(item.id).redacted = true;
    }
  }
}

// A text fails with the status of the first of its words that cannot be read.
void look_into_words(const Session& session, const std::vector<Item>& texts, Readings& readings) {
  std::vector<uint32_t> codes;
  std::vector<Reading*> of_codes;
  for (const Item& item : texts) {
    Reading& reading = readings.at(item.id);
    if (is_text_of_words(item, reading)) {
      codes.insert(codes.end(), item.facts.codes.begin(), item.facts.codes.end());
      of_codes.resize(codes.size(), &reading);
    }
  }
  if (codes.empty()) {
    return;
  }
  const std::vector<DeviceAnswer> answers = session.read_codes(codes);
  for (size_t i = 0; i < answers.size(); ++i) {
    const auto* text = std::get_if<std::string>(&of_codes[i]->value);
    if (answers[i].status != 0 && text != nullptr) {
      *of_codes[i] = {Reading::State::failed, answers[i].status, {}, *text};
    }
  }
}

// What the words say of values that the module gave.
void look_into(const Session& session, const std::vector<Item>& items, Readings& readings) {
  std::vector<Item> texts;
  std::copy_if(items.begin(), items.end(), std::back_inserter(texts), [&](const Item& item) {
    return item.kind == ValueKind::text && !item.missing &&
           readings.at(item.id).state != Reading::State::failed;
  });
  if (!texts.empty()) {
    blank_redacted(session, texts, readings);
    look_into_words(session, texts, readings);
  }
}

}  // namespace

std::optional<double> Reading::number() const {
  if (const auto* integer = std::get_if<int64_t>(&value)) {
    return static_cast<double>(*integer);
  }
  if (const auto* real = std::get_if<double>(&value)) {
    return *real;
  }
  return std::nullopt;
}

Reading read_item(const Session& session, const Item& item) {
  return read_items(session, {item}).at(item.id);
}

Readings read_items(const Session& session, const std::vector<Item>& items) {
  std::vector<const Item*> asked;
  std::vector<ItemQuestion> questions;
  Readings readings;
  for (const Item& item : items) {
    if (!readings.try_emplace(item.id).second) {
      continue;
    }
    // Something may still answer under the ID of an item that is missing; that makes no port or
    // module of it. An item of no known kind takes several reads.
    if (item.missing || item.kind) {
      asked.push_back(&item);
      questions.push_back({item.id, item.missing ? std::nullopt : item.kind});
    } else {
      readings.at(item.id) = read_of_any_kind(session, item);
    }
  }
  std::vector<ItemAnswer> answers = session.read(questions);
  for (size_t i = 0; i < asked.size(); ++i) {
    readings.at(asked[i]->id) = reading_of(*asked[i], std::move(answers[i]));
  }
  look_into(session, items, readings);
  return readings;
}

bool any_failed(const Readings& readings) {
  return std::any_of(readings.begin(), readings.end(), [](const auto& entry) {
    return entry.second.state == Reading::State::failed;
  });
}

bool out_of_range(const Item& item, const Reading& reading) {
  const auto value = reading.number();
  if (!value) {
    return false;
  }
  // Scaled readings carry rounding in their last digit; that alone puts none outside.
  const double slack = std::abs(*value) * 1e-9;
  return (item.min && *value < *item.min - slack) || (item.max && *value > *item.max + slack);
}

}  // namespace kova_host
