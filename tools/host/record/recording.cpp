// Has the host record, and keeps what a worker that died has left.
#include "tools/host/record/recording.h"

#include <fmt/format.h>

#include <set>
#include <utility>

#include "tools/host/model/item_data.h"
#include "tools/host/system/errors.h"

namespace kova_host {
namespace {

namespace fs = std::filesystem;

std::optional<std::string> unless_empty(std::string trouble) {
  return trouble.empty() ? std::nullopt : std::optional(std::move(trouble));
}

}  // namespace

Recording::Recording(std::shared_ptr<DeviceHost> host, const HostOptions& device,
                     const Options& options)
    : host_(std::move(host)), file_(options.file) {
  host_->load({device, RecordingPlan{options.file, options.redact ? private_codes() : ""}});
}

Recording::~Recording() {
  if (!is_finished_) {
    try {
      host_->end_recording(false);
    } catch (const std::exception&) {
      // The worker that held it is gone.
    }
  }
}

void Recording::set_time(std::chrono::milliseconds time) const {
  host_->set_time(static_cast<uint64_t>(time.count()));
}

std::optional<std::string> Recording::trouble() const {
  return unless_empty(host_->recording_trouble());
}

std::optional<std::string> Recording::finish() {
  is_finished_ = true;
  return unless_empty(host_->end_recording(true));
}

// The stand-in writes beside the file's place, once a second and whole at any time. It has put the
// file there itself where the worker was asked to end before it was killed.
std::optional<std::string> Recording::finish_without_worker() {
  is_finished_ = true;
  std::error_code error;
  const fs::path file = fs::weakly_canonical(file_, error);
  fs::path part = error ? file_ : file;
  part += ".part";
  if (fs::exists(part, error)) {
    fs::rename(part, file, error);
  }
  return error || !fs::exists(file, error)
             ? std::optional(fmt::format("{} cannot be written", file_.native()))
             : std::nullopt;
}

std::string private_codes() {
  std::set<uint32_t> codes;
  for (const FamilyData& family : item_data()) {
    for (const Item& item : family.items(family.instances ? family.instances->max : 1)) {
      if (item.facts.is_private) {
        codes.insert(item.facts.codes.begin(), item.facts.codes.end());
      }
    }
  }
  std::string text;
  for (auto at = codes.begin(); at != codes.end();) {
    const uint32_t first = *at;
    uint32_t last = first;
    while (++at != codes.end() && *at == last + 1) {
      last = *at;
    }
    text += fmt::format("{}0x{:X}..0x{:X}", text.empty() ? "" : ",", first, last);
  }
  return text;
}

}  // namespace kova_host
