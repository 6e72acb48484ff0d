// The sampling thread.
#include "tools/exporter/sampler.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <system_error>
#include <utility>

#include "tools/exporter/log.h"
#include "tools/host/model/selection.h"
#include "tools/host/session/inventory.h"
#include "tools/host/system/errors.h"
#include "tools/host/system/unix_time.h"

namespace kova_exporter {
namespace {

using kova_host::Item;
using kova_host::Reading;
using kova_host::Readings;

kova_page::RecentSamples::Row numbers_of(const Readings& readings) {
  kova_page::RecentSamples::Row row;
  for (const auto& [id, reading] : readings) {
    if (const auto number = reading.number();
        number && reading.state == Reading::State::good && std::isfinite(*number)) {
      row.emplace(id, *number);
    }
  }
  return row;
}

using kova_host::WorkerEvent;

constexpr double kLimitSeconds = 10;              // of a single call of the device
constexpr std::chrono::milliseconds kGrace{700};  // at the end of the program

void wait_until(int descriptor, std::chrono::steady_clock::time_point time) {
  const auto rest =
      std::chrono::ceil<std::chrono::milliseconds>(time - std::chrono::steady_clock::now());
  pollfd stop = {descriptor, POLLIN, 0};
  poll(&stop, 1, static_cast<int>(std::max<int64_t>(rest.count(), 0)));
}

bool all_failed(const Readings& readings) {
  return !readings.empty() && std::all_of(readings.begin(), readings.end(), [](const auto& entry) {
    return entry.second.state == Reading::State::failed;
  });
}

}  // namespace

Sampler::Sampler(kova_host::HostOptions options, Store& store, kova_host::WorkerSettings worker,
                 std::chrono::nanoseconds between_looks, kova_host::RulesFile rules)
    : options_(std::move(options)),
      store_(store),
      worker_([&] {
        worker.limit_seconds = kLimitSeconds;
        worker.outlives_hangs = true;
        worker.patience = kGrace;
        worker.waiting = this;
        worker.tell = [this](WorkerEvent event, const std::string& text) { note(event, text); };
        return std::move(worker);
      }()),
      between_looks_(between_looks),
      rules_(std::move(rules)),
      list_(store.latest()->list),
      stop_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (stop_ < 0) {
    throw std::system_error(errno, std::generic_category(), "cannot make an event descriptor");
  }
  thread_ = std::thread([this] { run(); });
}

Sampler::~Sampler() {
  stop_time_ = Clock::now().time_since_epoch().count();
  (void)eventfd_write(stop_, 1);
  thread_.join();
  close(stop_);
}

std::vector<int> Sampler::descriptors() const {
  return stop_time_ == 0 ? std::vector{stop_} : std::vector<int>();
}

// A sweep that is about to end may.
bool Sampler::go_on(const kova_host::CallUnderWay& /*call*/) {
  const Clock::rep stop = stop_time_;
  return stop == 0 || Clock::now().time_since_epoch() - Clock::duration(stop) < kGrace;
}

void Sampler::run() {
  const auto interval =
      std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(store_.interval()));
  auto next = Clock::now();
  while (stop_time_ == 0 && store_.failure().empty()) {
    const auto began = Clock::now();
    work_once();
    next = kova_host::next_sweep(next, interval, began, Clock::now());
    wait_until(stop_, next);
  }
  session_.reset();
  host_.reset();
}

void Sampler::work_once() {
  try {
    if (session_ == nullptr) {
      start_module();
    } else {
      look_for_new_items();
    }
    sweep();
  } catch (const kova_host::CallGivenUp&) {
    // The end of the program.
  } catch (const kova_host::HostError& error) {
    // What was wrong with the arguments at the start will not mend itself.
    if (error.fault() == kova_host::Fault::usage && host_ == nullptr) {
      store_.fail(error.what());
    } else {
      publish_failure(error.what());
    }
  } catch (const std::exception& error) {
    publish_failure(error.what());
  }
}

void Sampler::start_module() {
  if (host_ == nullptr) {
    auto host = std::make_shared<kova_host::WorkerHost>(worker_);
    host->load({options_});
    host_ = std::move(host);
  }
  auto session = std::make_unique<kova_host::Session>(host_, options_.simulate);
  auto list = std::make_shared<kova_page::ItemList>();
  list->number = list_->number + 1;
  list->items = kova_host::Inventory::of(*session).items();
  list->thresholds = thresholds_for(list->items);
  list_ = std::move(list);
  plan_.emplace(list_->items);
  session_ = std::move(session);
  last_look_ = Clock::now();
  log(LogLevel::info, "the device has {} items", kova_host::distinct(list_->items).size());
}

// A limit may be for what this machine does not have at present: that is told, and the rest holds.
kova_host::Thresholds Sampler::thresholds_for(const std::vector<Item>& items) const {
  try {
    return kova_host::thresholds_of(rules_, items);
  } catch (const kova_host::HostError& error) {
    log(LogLevel::warn, "the limits of --rules.file do not hold: {}", error.what());
    kova_host::Thresholds rules_alone;
    rules_alone.rules = rules_.rules;
    return rules_alone;
  }
}

// A family that comes later, such as a battery that is put in, is in the document of a new start
// only. Items that are gone stay: their reads fail.
void Sampler::look_for_new_items() {
  if (Clock::now() - last_look_ < between_looks_) {
    return;
  }
  last_look_ = Clock::now();
  const auto found = kova_host::Inventory::of(*session_);
  const auto is_new = [this](const Item& item) {
    return std::none_of(list_->items.begin(), list_->items.end(),
                        [&item](const Item& known) { return known.id == item.id; });
  };
  if (std::any_of(found.items().begin(), found.items().end(), is_new)) {
    session_.reset();
    start_module();
  }
}

void Sampler::sweep() {
  const auto began = Clock::now();
  Readings readings = kova_host::sweep_items(*session_, *plan_, began.time_since_epoch());
  const auto unasked = std::find_if(readings.begin(), readings.end(),
                                    [](const auto& entry) { return !entry.second.reason.empty(); });
  const bool whole = unasked == readings.end();
  if (whole && !trouble_.empty()) {
    trouble_.clear();
    log(LogLevel::info, "the device library answers for all items again");
  }
  const bool lost = all_failed(readings);
  std::string error = whole ? "no item of the device can be read" : unasked->second.reason;
  publish(std::move(readings), lost ? std::move(error) : "", began);
  if (lost && whole) {
    // A module that starts anew finds a device that has come back, or another one.
    session_.reset();
  }
}

void Sampler::note(WorkerEvent event, const std::string& text) {
  if (event == WorkerEvent::recovery) {
    log(LogLevel::info, "{}", text);
    return;
  }
  trouble_ = text;
  log(LogLevel::warn, "{}", text);
}

// The items and what was last known of them stay; none of it is fresh.
void Sampler::publish_failure(const std::string& error) {
  const auto before = store_.latest();
  if (before->error != error && trouble_ != error) {
    log(LogLevel::warn, "{}", error);
  }
  auto snapshot = std::make_shared<kova_page::Snapshot>(*before);
  snapshot->error = error;
  snapshot->trouble = trouble_;
  store_.publish(std::move(snapshot), nullptr);
}

void Sampler::publish(Readings readings, std::string error, Clock::time_point began) {
  const auto before = store_.latest();
  auto snapshot = std::make_shared<kova_page::Snapshot>();
  snapshot->list = list_;
  snapshot->number = before->number + 1;
  snapshot->time = kova_host::unix_time();
  snapshot->ended = Clock::now();
  snapshot->duration = std::chrono::duration<double>(snapshot->ended - began).count();
  snapshot->error = std::move(error);
  snapshot->trouble = trouble_;
  for (const auto& [id, reading] : readings) {
    if (reading.state != Reading::State::failed) {
      snapshot->last_success[id] = snapshot->time;
    } else if (const auto known = before->last_success.find(id);
               known != before->last_success.end()) {
      snapshot->last_success.insert(*known);
    }
  }
  if (snapshot->error != before->error && before->number > 0) {
    log(LogLevel::warn, "{}", snapshot->error.empty() ? "the device answers" : snapshot->error);
  }
  const kova_page::RecentSamples::Row numbers = numbers_of(readings);
  snapshot->readings = std::move(readings);
  log(LogLevel::debug, "sweep {}: {:.3f} s", snapshot->number, snapshot->duration);
  store_.publish(std::move(snapshot), &numbers);
}

}  // namespace kova_exporter
