// Results and errors as JSON documents, for scripts.
#include "tools/host/export/json_report.h"

#include "tools/host/model/status_text.h"
#include "tools/host/values/shown_value.h"
#include "tools/host/values/typed_value.h"

namespace kova_host {

JsonPtr json_value(const Reading& reading) {
  if (const auto* integer = std::get_if<int64_t>(&reading.value)) {
    return own(json_integer(*integer));
  }
  if (const auto* real = std::get_if<double>(&reading.value)) {
    return own(json_real(*real));
  }
  if (const auto* text = std::get_if<std::string>(&reading.value)) {
    return json_text(*text);
  }
  return own(json_null());
}

namespace {

JsonPtr json_options(const std::vector<Option>& options) {
  JsonPtr array = own(json_array());
  for (const Option& option : options) {
    JsonPtr entry = own(json_object());
    put(entry, "value", own(json_integer(option.value)));
    put(entry, "label", json_text(option.label));
    append(array, std::move(entry));
  }
  return array;
}

void put_description(const JsonPtr& object, const Item& item) {
  put(object, "family", json_text(item.family));
  put(object, "package", json_text(item.package));
  put(object, "path", json_text(path_of(item)));
  put(object, "access", json_text(item.access));
  if (const auto role = role_name(item.facts.role); !role.empty()) {
    put(object, "role", json_text(role));
  }
  if (item.kind) {
    put(object, "kind", json_text(kind_name(*item.kind)));
  }
  if (item.min) {
    put(object, "min", own(json_real(*item.min)));
  }
  if (item.max) {
    put(object, "max", own(json_real(*item.max)));
  }
  if (!item.options.empty()) {
    put(object, "options", json_options(item.options));
  }
}

void put_value(const JsonPtr& object, const Item& item, const Reading& reading) {
  put(object, "value", json_value(reading));
  if (const auto* integer = std::get_if<int64_t>(&reading.value)) {
    if (const auto label = option_label(item, *integer); !label.empty()) {
      put(object, "label", json_text(label));
    }
  }
  if (!item.unit.empty()) {
    put(object, "unit", json_text(item.unit));
  }
  if (reading.number() && (item.min || item.max)) {
    put(object, "in_range", own(json_boolean(!out_of_range(item, reading))));
  }
}

JsonPtr json_write(const WriteOutcome& outcome) {
  const Item& item = outcome.plan.item;
  JsonPtr object = own(json_object());
  put(object, "id", json_text(id_text(item.id)));
  if (!item.name.empty()) {
    put(object, "path", json_text(path_of(item)));
  }
  put(object, "previous", json_value(outcome.previous));
  put(object, "sent", to_json(outcome.plan.number));
  put_value(object, item, outcome.now);
  if (outcome.status != 0) {
    put(object, "failure", json_text(write_failure(outcome.status)));
  } else if (!outcome.ok()) {
    put(object, "failure", json_text("cannot be read back: " + failure_text(item, outcome.now)));
  }
  put(object, "ok", own(json_boolean(outcome.ok())));
  put_status(object, outcome.status);
  return object;
}

}  // namespace

void put_status(const JsonPtr& object, uint32_t status) {
  const auto name = status_name(status);
  put(object, "status", name.empty() ? own(json_null()) : json_text(name));
  put(object, "code", own(json_integer(status)));
}

JsonPtr json_item(const Item& item, const Reading& reading, Detail detail) {
  JsonPtr object = own(json_object());
  put(object, "id", json_text(id_text(item.id)));
  if (!item.name.empty()) {
    put(object, "name", json_text(item.name));
  }
  if (item.kind && detail == Detail::full) {
    put_description(object, item);
  }
  put_value(object, item, reading);
  if (reading.state == Reading::State::failed) {
    put(object, "failure", json_text(failure_text(item, reading)));
  }
  if (!reading.in_part.empty()) {
    put(object, "in_part", json_text(reading.in_part));
  }
  if (reading.redacted) {
    put(object, "redacted", own(json_true()));
  }
  if (item.missing) {
    put(object, "missing", own(json_true()));
  }
  put(object, "ok", own(json_boolean(reading.state != Reading::State::failed)));
  put_status(object, reading.status);
  return object;
}

JsonPtr json_items(const std::vector<Item>& items, const Readings& readings, Detail detail) {
  JsonPtr array = own(json_array());
  for (const Item& item : items) {
    append(array, json_item(item, readings.at(item.id), detail));
  }
  JsonPtr object = own(json_object());
  put(object, "ok", own(json_boolean(!any_failed(readings))));
  put(object, "items", std::move(array));
  return object;
}

JsonPtr json_writes(const std::vector<WriteOutcome>& outcomes, bool dry_run, bool simulated) {
  bool ok = true;
  JsonPtr array = own(json_array());
  for (const WriteOutcome& outcome : outcomes) {
    ok = ok && outcome.ok();
    append(array, json_write(outcome));
  }
  JsonPtr object = own(json_object());
  put(object, "ok", own(json_boolean(ok)));
  put(object, "dry_run", own(json_boolean(dry_run)));
  put(object, "simulated", own(json_boolean(simulated)));
  put(object, "items", std::move(array));
  return object;
}

JsonPtr json_error(const HostError& error) {
  JsonPtr details = own(json_object());
  put(details, "message", json_text(error.what()));
  if (error.status()) {
    put_status(details, *error.status());
  }
  JsonPtr object = own(json_object());
  put(object, "ok", own(json_false()));
  put(object, "error", std::move(details));
  return object;
}

}  // namespace kova_host
