// The rules, one row each. Expressions say in PromQL what the condition says of a sweep; they see
// the same values, in base units, under the names of docs/metrics.md.
#include "tools/host/judgements/judgement_table.h"

#include <algorithm>

#include "tools/host/judgements/conditions.h"
#include "tools/host/judgements/judge.h"

namespace kova_host {
namespace {

using std::chrono::minutes;

// What tells the low-battery threshold in force: each battery type has its own, and the cut-off may
// be switched off. The same in PromQL.
#define KOVA_CUT_OFF_ITEMS                                          \
  "PIC/Information/Battery type|PIC/Settings/*low battery voltage|" \
  "PIC/Settings/Low battery voltage setup"
#define KOVA_CUT_OFF                                                                         \
  "(\n"                                                                                      \
  "  (kova_setting_voltage_volts{family=\"PIC\", item=\"12V low battery voltage\"}\n"        \
  "    and on (job, instance) kova_state{item=\"Battery type\", kova_state=\"12V\"} == 1\n"  \
  "  or kova_setting_voltage_volts{family=\"PIC\", item=\"24V low battery voltage\"}\n"      \
  "    and on (job, instance) kova_state{item=\"Battery type\", kova_state=\"24V\"} == 1)\n" \
  "  and on (job, instance) kova_setting_state{item=\"Low battery voltage setup\", "         \
  "kova_setting_state=\"Enable\"} == 1)"

constexpr std::string_view kLookForFan =
    "Look for a stopped fan, a blocked air way, or a machine standing in the sun.";

constexpr Judgement kTable[] = {
    {.kind = "exporter-down",
     .alert = "KovaExporterDown",
     .severity = Severity::critical,
     .held = minutes(2),
     .subject = "kova-exporter",
     .says = "does not answer",
     .when = "the exporter cannot be scraped",
     .action = "Is the machine on and its network up? Then look at the service: systemctl status "
               "kova-exporter.",
     .expression = R"(up{job="kova"} == 0)"},
    {.kind = "no-device",
     .alert = "KovaNoDevice",
     .severity = Severity::critical,
     .held = minutes(2),
     .subject = "the hardware",
     .says = "does not answer the exporter",
     .when = "the exporter answers, the hardware does not",
     .action = "Run kovactl doctor on the machine: it names the step that fails and what to do.",
     .expression = "kova_up == 0"},
    {.kind = "sweep-stale",
     .alert = "KovaSweepStale",
     .severity = Severity::warning,
     .held = minutes(1),
     .subject = "the readings",
     .says = "are old",
     .when = "the readings are older than three intervals; for text files, five minutes",
     .action = "The device library hangs, or the timer that writes the text file has stopped. "
               "Restart the service; if it hangs again, record what the library does with kovactl "
               "record.",
     .expression = R"(kova_sweep_age_seconds > 3 * kova_sweep_interval_seconds
or (time() - kova_sweep_timestamp_seconds unless kova_sweep_age_seconds) > 300)",
     .shown = "{{ $value | humanizeDuration }}"},
    {.kind = "sweep-slow",
     .alert = "KovaSweepSlow",
     .severity = Severity::warning,
     .held = minutes(10),
     .limit = 0.8,
     .subject = "a sweep",
     .says = "takes nearly as long as the interval",
     .when = "a sweep takes longer than {percent} of the interval: a busy bus",
     .action = "The bus is busy: an agent reads it too, or an item answers slowly. Raise "
               "--interval; kovactl doctor names the slowest items.",
     .expression = "kova_sweep_duration_seconds > {limit} * kova_sweep_interval_seconds",
     .shown = "{{ $value | humanizeDuration }}"},

    {.kind = kUnreadableKind,
     .alert = "KovaItemUnreadable",
     .severity = Severity::critical,
     .held = minutes(2),
     .condition = unreadable,
     .says = "cannot be read",
     .when = "an item cannot be read",
     .action = "One item of many: look at its sensor or cable. All items of a family: the family's "
               "chip or its bus. kovactl doctor tells what the device answers.",
     .expression = "kova_item_read_success == 0"},
    {.kind = "gone",
     .alert = "KovaItemGone",
     .severity = Severity::critical,
     .held = minutes(2),
     .condition = gone,
     .says = "is gone",
     .when = "an item that was there an hour ago, or that a file of --expect knows, is not told of "
             "any more",
     .action = "Is the board or module still in the machine? kovactl diff of an earlier recording "
               "with now tells all that is missing.",
     .expression = R"(kova_item_read_success offset 1h
unless on (job, instance, id) kova_item_read_success
and on (job, instance) kova_up == 1)"},
    {.kind = "absolute-zero",
     .alert = "KovaAbsoluteZero",
     .severity = Severity::warning,
     .held = minutes(5),
     .looks_at = {.quantity = "temperature", .measured = true},
     .condition = absolute_zero,
     .says = "reads absolute zero",
     .mark = "NO SENSOR",
     .when = "a temperature reads 0 kelvin: the sensor reports 0",
     .action = "The sensor is broken, not connected, or described wrongly by the device.",
     .expression = "kova_temperature_celsius <= -272",
     .shown = "{{ $value }} degrees Celsius"},
    {.kind = "out-of-range",
     .alert = "KovaOutOfRange",
     .severity = Severity::warning,
     .held = minutes(5),
     // The battery type that the power input needs is asked by the rule on its supply.
     .on_value = true,
     .condition = beyond_range,
     .says = "is outside its published range",
     .mark = "OUT OF RANGE",
     .when = "a value lies outside its published range; that of the power input counts only while "
             "the battery type is not known",
     .action = "Compare value and range with kovactl get {id}.",
     .expression = R"(kova_item_in_range == 0
unless on (job, instance, id) kova_temperature_celsius <= -272
unless on (job, instance, id) (kova_voltage_volts{family="PIC", item="Power input"}
  and on (job, instance) kova_state{item="Battery type", kova_state=~"12V|24V"} == 1))"},
    {.kind = "temperature-near-maximum",
     .alert = "KovaTemperatureNearMaximum",
     .severity = Severity::warning,
     .held = minutes(5),
     .looks_at = {.quantity = "temperature", .measured = true},
     .limit = 0.9,
     .on_value = true,
     .condition = near_maximum,
     .says = "is near its published maximum",
     .mark = "HOT",
     .when = "a temperature is above {percent} of its published maximum",
     .action = kLookForFan,
     .expression = "kova_temperature_celsius > {limit} * kova_temperature_maximum_celsius\n"
                   "<= kova_temperature_maximum_celsius",
     .shown = "{{ $value }} degrees Celsius"},
    {.kind = "fan-stopped",
     .alert = "KovaFanStopped",
     .severity = Severity::critical,
     .held = minutes(2),
     .looks_at = {.quantity = "fan_speed", .measured = true},
     .asks_peers = true,
     .on_value = true,
     .condition = stopped,
     .says = "stands still while others turn",
     .mark = "STANDS STILL",
     // A machine that has switched all its fans off is not broken.
     .when = "a fan stands still while others of the machine turn",
     .action = "Replace the fan; until then watch the machine's temperatures.",
     .expression = R"(kova_fan_speed_rpm == 0
and on (job, instance) max by (job, instance) (kova_fan_speed_rpm) > 0)"},
    {.kind = "battery-worn",
     .alert = "KovaBatteryWorn",
     .severity = Severity::warning,
     .held = minutes(10),
     .looks_at = {.path = "SMART BATTERY/*/SoH"},
     .limit = 0.6,
     .on_value = true,
     .condition = below_limit,
     .says = "tells of a worn battery",
     .mark = "WORN",
     .when = "the battery's state of health is below {percent}",
     .action = "Plan the battery's replacement.",
     .expression = R"(kova_level_ratio{family="SMART BATTERY", item="SoH"} < {limit})",
     .shown = "{{ $value | humanizePercentage }}"},
    {.kind = "battery-error",
     .alert = "KovaBatteryError",
     .severity = Severity::warning,
     .held = minutes(2),
     .looks_at = {.path = "SMART BATTERY/*/ErrorCodes"},
     .limit = 0,
     .on_value = true,
     .condition = above_limit,
     .says = "is not 0",
     .mark = "ERROR",
     .when = "the battery reports an error code",
     // Bits 3..0 of BatteryStatus() in the Smart Battery Data specification.
     .action = "The code is the low four bits of the battery's status word. A code that stays "
               "across a restart of the machine means a battery to be replaced.",
     .expression = R"(kova_code{family="SMART BATTERY", item="ErrorCodes"} > {limit})",
     .shown = "{{ $value }}"},
    {.kind = "battery-type-unknown",
     .alert = "KovaBatteryTypeUnknown",
     .severity = Severity::warning,
     .held = minutes(5),
     .looks_at = {.path = kBatteryType},
     .on_value = true,
     .condition = no_battery_type,
     .says = "is not known to the controller",
     .mark = "NOT KNOWN",
     .when = "the controller cannot tell the vehicle battery's type, and guards it by no threshold",
     .action = "Look at the supply's voltage, or name the type with kovactl set 'Battery type "
               "setting'.",
     .expression = R"(kova_state{family="PIC", item="Battery type", kova_state="ERR"} == 1)"},
    {.kind = "input-below-cut-off",
     .alert = "KovaInputVoltageBelowCutOff",
     .severity = Severity::critical,
     .held = minutes(1),
     .looks_at = {.path = kPowerInput},
     .asks = KOVA_CUT_OFF_ITEMS,
     .on_value = true,
     .condition = below_cut_off,
     .says = "is below the low-battery threshold in force",
     .mark = "BELOW CUT-OFF",
     .when = "the input is below the low-battery threshold in force",
     .action = "Charge the vehicle's battery: the machine is about to switch itself off.",
     .expression = "kova_voltage_volts{family=\"PIC\", item=\"Power input\"}\n"
                   "< on (job, instance) group_left () " KOVA_CUT_OFF,
     .shown = "{{ $value }} V"},
    {.kind = "input-near-cut-off",
     .alert = "KovaInputVoltageNearCutOff",
     .severity = Severity::warning,
     .held = minutes(1),
     .looks_at = {.path = kPowerInput},
     .asks = KOVA_CUT_OFF_ITEMS,
     .limit = 0.3,
     .on_value = true,
     .condition = near_cut_off,
     .says = "is close to the low-battery threshold in force",
     .mark = "NEAR CUT-OFF",
     .when = "the input is within {limit} V of the low-battery threshold in force",
     .action = "Charge the vehicle's battery; below the threshold the machine switches itself off.",
     .expression = "kova_voltage_volts{family=\"PIC\", item=\"Power input\"}\n"
                   "< on (job, instance) group_left () {limit} + " KOVA_CUT_OFF "\n"
                   ">= on (job, instance) group_left () " KOVA_CUT_OFF,
     .shown = "{{ $value }} V"},
    {.kind = "input-above-supply",
     .alert = "KovaInputVoltageTooHigh",
     .severity = Severity::warning,
     .held = minutes(1),
     .looks_at = {.path = kPowerInput},
     .asks = kBatteryType,
     .on_value = true,
     .condition = above_supply,
     .says = "is higher than a supply of the battery's type may be",
     .mark = "TOO HIGH",
     .when = "the input is above 16 V with a battery of 12 V, or above 32 V with one of 24 V",
     .action = "Measure the vehicle's supply: its regulator may have failed.",
     .expression = R"(kova_voltage_volts{family="PIC", item="Power input"}
> on (job, instance) group_left () (
  16 * (kova_state{family="PIC", item="Battery type", kova_state="12V"} == 1)
  or 32 * (kova_state{family="PIC", item="Battery type", kova_state="24V"} == 1)))",
     .shown = "{{ $value }} V"},
    {.kind = "port-overload",
     .alert = "KovaPoEOverload",
     .severity = Severity::warning,
     .held = minutes(1),
     .looks_at = {.path = "PoE/*", .quantity = "current", .measured = true},
     .limit = 0.95,
     .on_value = true,
     .condition = near_maximum,
     .says = "is at the port's limit",
     .mark = "OVERLOAD",
     .when = "a port's current is above {percent} of its published maximum",
     .action = "Look at what is plugged into the port, or switch it off with kovactl set.",
     .expression = R"(kova_current_amperes{family="PoE"} > {limit} * kova_current_maximum_amperes
<= kova_current_maximum_amperes)",
     .shown = "{{ $value }} A"},
};

}  // namespace

std::span<const Judgement> judgement_table() {
  return kTable;
}

const Judgement* find_judgement(std::string_view kind) {
  const auto* found = std::find_if(std::begin(kTable), std::end(kTable),
                                   [kind](const Judgement& rule) { return rule.kind == kind; });
  return found == std::end(kTable) ? nullptr : found;
}

}  // namespace kova_host
