// Starts the module, and tells why it does not start.
#include "tools/host/session/session.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <utility>

#include "include/kova_iot.h"
#include "tools/host/model/status_text.h"
#include "tools/host/session/local_host.h"
#include "tools/host/system/errors.h"

namespace kova_host {
namespace {

std::shared_ptr<DeviceHost> host_of_this_process(const HostOptions& options) {
  auto host = std::make_shared<LocalHost>();
  host->load({options});
  return host;
}

}  // namespace

Session::Session(const HostOptions& options)
    : Session(host_of_this_process(options), options.simulate) {}

Session::Session(std::shared_ptr<DeviceHost> host, bool simulated) : host_(std::move(host)) {
  const uint32_t status = host_->start();
  if (status == IOT_STATUS_SUCCESS) {
    return;
  }
  const std::string hint = simulated ? "" : "; --simulate shows a simulated machine";
  const std::string reason =
      status == IOT_STATUS_NOT_FOUND
          ? "no device found: " + cause_of_no_device(host_->diagnose())
          : fmt::format("the module did not start: {}", describe_status(status));
  throw HostError(Fault::no_device, reason + hint, status);
}

Session::~Session() {
  host_->end();
}

JsonPtr Session::capability() const {
  Document document = host_->capability();
  if (document.status != IOT_STATUS_SUCCESS) {
    throw HostError(Fault::no_device,
                    "the module offers no items: " + describe_status(document.status),
                    document.status);
  }
  return std::move(document.document);
}

std::set<uint32_t> Session::redacted(const std::vector<uint32_t>& codes) const {
  std::vector<uint32_t> unknown;
  std::copy_if(codes.begin(), codes.end(), std::back_inserter(unknown),
               [this](uint32_t code) { return redacted_.try_emplace(code, false).second; });
  if (!unknown.empty()) {
    for (const uint32_t code : host_->redacted(unknown)) {
      redacted_[code] = true;
    }
  }
  std::set<uint32_t> result;
  std::copy_if(codes.begin(), codes.end(), std::inserter(result, result.end()),
               [this](uint32_t code) { return redacted_.at(code); });
  return result;
}

std::optional<DeviceAnswer> Session::read_code(uint32_t code) const {
  const auto answers = host_->read_codes({&code, 1});
  return answers.empty() ? std::nullopt : std::optional(answers.front());
}

}  // namespace kova_host
