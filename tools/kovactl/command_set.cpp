// `kovactl set`: writes an item.
#include <fmt/format.h>

#include <cmath>

#include "module/kova_iot.h"
#include "tools/host/json_report.h"
#include "tools/host/json_writer.h"
#include "tools/host/status_text.h"
#include "tools/host/value_text.h"
#include "tools/host/write_value.h"
#include "tools/kovactl/command_support.h"
#include "tools/kovactl/output.h"

namespace kovactl {
namespace {

struct Options {
  std::string item;
  std::string value;  // as typed
  bool json = false;
};

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

ExitCode run(const GlobalOptions& globals, const Options& options) {
  const auto session = open_session(globals);
  const Inventory inventory = Inventory::of(*session);
  const Item item = select_one(inventory.items(), options.item);
  const Number number = value_to_set(item, options.value);
  const uint32_t status = session->write(item.id, to_json(number).get());
  const Reading reading = read_item(*session, item);
  if (options.json) {
    print(json_document(set_report(item, reading, number, status).get(), JsonLayout::indented));
  } else if (status == IOT_STATUS_SUCCESS) {
    print(set_text(item, reading, number));
  }
  if (status != IOT_STATUS_SUCCESS) {
    report(fmt::format("cannot write {}: {}{}", title(item), write_failure(status),
                       refusal_hint(item, number)));
    return ExitCode::item_failed;
  }
  return ExitCode::success;
}

}  // namespace

void add_set(CommandLine& line) {
  auto options = std::make_shared<Options>();
  CLI::App& command =
      line.add({"set", "Write an item", "kovactl --simulate set 0x14140B01 0"},
               [options](const GlobalOptions& globals) { return run(globals, *options); });
  command.add_option("ITEM", options->item, "Item by ID, name or path")->required();
  command.add_option("VALUE", options->value, "Number, or the label of one of the item's options")
      ->required();
  command.add_flag("--json", options->json, "Print JSON, with a status for every item");
}

}  // namespace kovactl
