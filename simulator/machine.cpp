// Reads and writes on the simulated machine.
#include "simulator/machine.h"

#include <thread>
#include <utility>

#include "simulator/kova_device_sim.h"

namespace kova_sim {
namespace {

// Whether call number `call` (1 for the first) is one of those that fail.
bool strikes(const std::optional<Failure>& failure, std::uint64_t call) {
  return failure && call % failure->every == 0;
}

std::uint32_t fail_read(const Failure& failure, std::uint32_t* value) {
  if (failure.stores) {
    *value = *failure.stores;
  }
  return failure.status;
}

bool is_negative(const std::optional<Limit>& limit) {
  return limit && std::holds_alternative<std::int64_t>(*limit) &&
         std::get<std::int64_t>(*limit) < 0;
}

}  // namespace

Machine::Machine(MachineDescription description) : description_(std::move(description)) {}

// Lets the time of a call pass. Returns the item of the code, or null if it is not described.
DescribedCode* Machine::begin_call(std::uint32_t code) {
  const auto found = description_.items.find(code);
  DescribedCode* item = found == description_.items.end() ? nullptr : &found->second;
  const std::uint64_t delay_us =
      std::uint64_t{description_.bus.delay_us} + (item == nullptr ? 0 : item->delay_us);
  if (set_time_) {
    time_ = *set_time_;
    return item;
  }
  if (delay_us > 0) {
    std::this_thread::sleep_for(std::chrono::microseconds(delay_us));
  }
  if (description_.clock_step_ms) {
    const std::uint64_t calls_before = all_calls_.reads + all_calls_.writes;
    time_ = std::chrono::milliseconds(calls_before * *description_.clock_step_ms);
  } else {
    time_ = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() -
                                                                  start_);
  }
  return item;
}

std::uint32_t Machine::not_described() const {
  return description_.bus.not_described.value_or(SIM_STATUS_NOT_DESCRIBED);
}

// What is there to read, once no failure has struck.
std::uint32_t Machine::value_of(const DescribedCode& item, Calls& calls,
                                std::uint32_t* value) const {
  if (!item.value) {
    return not_described();
  }
  const auto* trace = std::get_if<SharedTrace>(&*item.value);
  if (trace == nullptr) {
    *value = sample(*item.value, time_, calls.reads);
    return 0;
  }
  const Answer& answer = (*trace)->take(whole_milliseconds(time_), calls.read_position);
  *value = answer.word.value_or(*value);
  return answer.status;
}

std::uint32_t Machine::read(std::uint32_t code, std::uint32_t* value) {
  const DescribedCode* item = begin_call(code);
  const std::uint64_t all_reads = ++all_calls_.reads;
  Calls unknown;
  Calls& calls = item == nullptr ? unknown : calls_[code];
  ++calls.reads;
  // A disturbed bus hides what the device would have answered.
  if (strikes(description_.bus.fail_read, all_reads)) {
    return fail_read(*description_.bus.fail_read, value);
  }
  if (item != nullptr && strikes(item->fail_read, calls.reads)) {
    return fail_read(*item->fail_read, value);
  }
  return item == nullptr ? not_described() : value_of(*item, calls, value);
}

std::uint32_t Machine::write(std::uint32_t code, std::uint32_t value) {
  const DescribedCode* item = begin_call(code);
  const std::uint64_t all_writes = ++all_calls_.writes;
  Calls unknown;
  Calls& calls = item == nullptr ? unknown : calls_[code];
  ++calls.writes;
  if (strikes(description_.bus.fail_write, all_writes)) {
    return description_.bus.fail_write->status;
  }
  if (item == nullptr) {
    return not_described();
  }
  if (strikes(item->fail_write, calls.writes)) {
    return item->fail_write->status;
  }
  if (!item->write) {
    return !item->recorded_writes
               ? SIM_STATUS_READ_ONLY
               : item->recorded_writes->take(whole_milliseconds(time_), calls.write_position)
                     .status;
  }
  if (!accepts(*item->write, value)) {
    return item->write->refused;
  }
  for (const std::uint32_t changed : item->write->changes) {
    DescribedCode& target = description_.items[changed];
    target.value = Stored{value};
    target.is_redacted = false;
  }
  return 0;
}

bool Machine::is_redacted(std::uint32_t code) const {
  const auto found = description_.items.find(code);
  return found != description_.items.end() && found->second.is_redacted;
}

// What a code holds now: the checks of the description have seen to it that a limit's code holds
// something. Looking at it is no device call and counts as none.
std::uint32_t Machine::word_of(std::uint32_t code) const {
  const auto calls = calls_.find(code);
  return sample(*description_.items.at(code).value, time_,
                calls == calls_.end() ? 0 : calls->second.reads);
}

// Words have no sign of their own: they are compared as signed when a limit is negative.
bool Machine::accepts(const WriteRule& rule, std::uint32_t value) const {
  const bool is_signed = is_negative(rule.min) || is_negative(rule.max);
  const auto number = [is_signed](std::uint32_t word) {
    return is_signed ? std::int64_t{static_cast<std::int32_t>(word)} : std::int64_t{word};
  };
  const auto end = [&](const Limit& limit) {
    const auto* reference = std::get_if<CodeReference>(&limit);
    return reference != nullptr ? number(word_of(reference->code)) : std::get<std::int64_t>(limit);
  };
  return (!rule.min || number(value) >= end(*rule.min)) &&
         (!rule.max || number(value) <= end(*rule.max));
}

}  // namespace kova_sim
