// `kovactl get` and `kovactl set`: single items.
#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "commands.h"
#include "include/kova_iot.h"
#include "json_report.h"
#include "json_writer.h"
#include "output.h"
#include "set_value.h"
#include "status_text.h"
#include "terminal.h"
#include "value_text.h"

namespace kovactl {
namespace {

// "0x14140B01 PoE 1 power"
std::string title(const Item& item) {
  const std::string name = printable(item.name);
  return name.empty() ? id_text(item.id) : id_text(item.id) + ' ' + name;
}

std::string get_text(const std::vector<Item>& items, const Readings& readings, bool value_only) {
  size_t width = 0;
  for (const Item& item : items) {
    width = std::max(width, display_width(title(item)));
  }
  std::string text;
  for (const Item& item : items) {
    const Reading& reading = readings.at(item.id);
    if (value_only) {
      text += plain_value(reading) + '\n';
      continue;
    }
    text += padded(title(item), width) + "  " + value_with_unit(item, reading);
    text += out_of_range(item, reading) ? "  OUT OF RANGE\n" : "\n";
  }
  return text;
}

void report_failures(const std::vector<Item>& items, const Readings& readings) {
  for (const Item& item : items) {
    const Reading& reading = readings.at(item.id);
    if (reading.state == Reading::State::failed) {
      report(fmt::format("cannot read {}: {}", title(item), failure_text(reading)));
    }
  }
}

double as_double(const Number& number) {
  return std::visit([](auto v) { return static_cast<double>(v); }, number);
}

// The device decides what it accepts; the published range is what to try next.
std::string refusal_hint(const Item& item, const Number& number) {
  if (item.access == "r") {
    return ", it is read-only";
  }
  const double value = as_double(number);
  if ((item.min && value < *item.min) || (item.max && value > *item.max)) {
    return ", its range is " + range_text(item);
  }
  return "";
}

// What the device holds now, and what was sent if that is not the same: the module scales and
// truncates, and a device may round or limit.
std::string set_text(const Item& item, const Reading& reading, const Number& sent) {
  if (reading.state != Reading::State::good) {
    return title(item) + "  written\n";
  }
  const double wanted = as_double(sent);
  const auto held = reading.number();
  const bool differs = held && std::abs(*held - wanted) > std::abs(wanted) * 1e-9;
  return fmt::format("{}  {}{}\n", title(item), value_with_unit(item, reading),
                     differs ? fmt::format(", after {} was sent", short_number(wanted)) : "");
}

// As for a read, with the status of the write.
JsonPtr set_report(const Item& item, const Reading& reading, const Number& sent, uint32_t status) {
  const bool written = status == IOT_STATUS_SUCCESS;
  JsonPtr entry = json_item(item, reading);
  put(entry, "sent", to_json(sent));
  put(entry, "ok", own(json_boolean(written)));
  put_status(entry, status);
  JsonPtr items = own(json_array());
  append(items, std::move(entry));
  JsonPtr document = own(json_object());
  put(document, "ok", own(json_boolean(written)));
  put(document, "items", std::move(items));
  return document;
}

}  // namespace

ExitCode run_get(const Request& request) {
  const HostSession session(request.host);
  const Catalogue catalogue = Catalogue::from_document(session.capability().get());
  const std::vector<Item> items = catalogue.describe(request.ids);
  const Readings readings = read_items(session, items);
  if (request.json) {
    print(json_document(json_items(items, readings).get(), JsonLayout::indented));
  } else {
    print(get_text(items, readings, request.value_only));
  }
  report_failures(items, readings);
  return any_failed(readings) ? ExitCode::item_failed : ExitCode::success;
}

ExitCode run_set(const Request& request) {
  const HostSession session(request.host);
  const Catalogue catalogue = Catalogue::from_document(session.capability().get());
  const Item item = catalogue.describe(request.ids.front());
  const Number number = value_to_set(item, request.value);
  const uint32_t status = session.write(item.id, to_json(number).get());
  const Reading reading = read_item(session, item);
  if (request.json) {
    print(json_document(set_report(item, reading, number, status).get(), JsonLayout::indented));
  } else if (status == IOT_STATUS_SUCCESS) {
    print(set_text(item, reading, number));
  }
  if (status != IOT_STATUS_SUCCESS) {
    report(fmt::format("cannot write {}: {}{}", title(item), describe_status(status),
                       refusal_hint(item, number)));
    return ExitCode::item_failed;
  }
  return ExitCode::success;
}

}  // namespace kovactl
