// Asks the module in this process. A value handed to it is preset to something no item can report:
// what is untouched afterwards was not read, whatever the status says.
#include "tools/host/session/local_host.h"

#include <algorithm>
#include <iterator>
#include <limits>

#include "include/kova_iot.h"

namespace kova_host {
namespace {

// Items are 32-bit words, scaled by at most 1: none reaches these.
constexpr json_int_t kUntouchedInteger = std::numeric_limits<json_int_t>::min();
constexpr double kUntouchedReal = 1e300;
constexpr const char* kUntouchedText = "\x01untouched";

JsonPtr preset(std::optional<ValueKind> kind) {
  if (!kind) {
    return own(json_null());
  }
  switch (*kind) {
    case ValueKind::text:
      return own(json_string(kUntouchedText));
    case ValueKind::real:
      return own(json_real(kUntouchedReal));
    default:
      return own(json_integer(kUntouchedInteger));
  }
}

ItemValue filled_value(const json_t* json) {
  switch (json_typeof(json)) {
    case JSON_STRING: {
      std::string text(json_string_value(json), json_string_length(json));
      return text == kUntouchedText ? ItemValue() : text;
    }
    case JSON_REAL: {
      const double real = json_real_value(json);
      return real == kUntouchedReal ? ItemValue() : real;
    }
    case JSON_INTEGER: {
      const json_int_t integer = json_integer_value(json);
      return integer == kUntouchedInteger ? ItemValue() : static_cast<int64_t>(integer);
    }
    default:
      return {};
  }
}

}  // namespace

Loaded LocalHost::load(const Loading& loading) {
  stand_ins_ = std::make_unique<StandIns>(loading);
  if (page_ != nullptr && !DirectDevice::in_process()) {
    guard_.open(stand_ins_->library(), *page_);
  }
  stand_ins_->load();
  module_ = std::make_unique<Module>(loading.host.module);
  return {module_->file(), loading.replay ? stand_ins_->begin_replay(loading.host) : 0};
}

uint32_t LocalHost::start() {
  return module_->initialize();
}

void LocalHost::end() {
  module_->uninitialize();
}

Document LocalHost::capability() {
  Document result;
  JsonPtr document = own(json_object());
  result.status = module_->capability(document.get());
  if (result.status == IOT_STATUS_SUCCESS) {
    result.document = std::move(document);
  }
  return result;
}

ItemAnswer LocalHost::read_one(const ItemQuestion& question) const {
  const JsonPtr json = preset(question.kind);
  const uint32_t status = module_->read(question.id, json.get());
  return {status, filled_value(json.get())};
}

std::vector<ItemAnswer> LocalHost::read(std::span<const ItemQuestion> questions) {
  std::vector<ItemAnswer> answers;
  answers.reserve(questions.size());
  for (const ItemQuestion& question : questions) {
    answers.push_back(read_one(question));
  }
  return answers;
}

uint32_t LocalHost::write(uint32_t id, const Number& number) {
  const auto* integer = std::get_if<int64_t>(&number);
  const JsonPtr value =
      own(integer != nullptr ? json_integer(*integer) : json_real(std::get<double>(number)));
  return module_->write(id, value.get());
}

std::vector<DeviceAnswer> LocalHost::read_codes(std::span<const uint32_t> codes) {
  std::vector<DeviceAnswer> answers;
  if (const auto device = DirectDevice::in_process()) {
    for (const uint32_t code : codes) {
      answers.push_back(device->read(code));
    }
  }
  return answers;
}

DeviceDiagnosis LocalHost::diagnose() {
  return diagnose_device();
}

std::vector<uint32_t> LocalHost::redacted(std::span<const uint32_t> codes) {
  std::vector<uint32_t> result;
  if (const auto device = DirectDevice::in_process()) {
    std::copy_if(codes.begin(), codes.end(), std::back_inserter(result),
                 [&device](uint32_t code) { return device->is_redacted(code); });
  }
  return result;
}

std::vector<RecordedCode> LocalHost::recorded_codes() {
  return stand_ins_->recorded_codes();
}

void LocalHost::set_time(uint64_t milliseconds) {
  stand_ins_->set_time(milliseconds);
}

std::string LocalHost::recording_trouble() {
  return stand_ins_->trouble();
}

std::string LocalHost::end_recording(bool keep) {
  return stand_ins_->end_recording(keep);
}

}  // namespace kova_host
