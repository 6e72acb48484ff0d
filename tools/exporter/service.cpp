// The running exporter. The calling thread serves; the sampler has one of its own.
#include "tools/exporter/service.h"

#include <poll.h>
#include <sys/signalfd.h>
#include <systemd/sd-daemon.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <optional>
#include <system_error>

#include "tools/exporter/pulse.h"
#include "tools/exporter/sampler.h"
#include "tools/exporter/server.h"
#include "tools/host/system/host_name.h"
#include "tools/host/system/plain_text.h"

namespace kova_exporter {
namespace {

constexpr int kWrongArguments = 2;

// The signals that end the program, as a descriptor to poll. Made before any thread, which
// inherits that they are blocked.
class EndSignals {
 public:
  EndSignals() {
    sigset_t signals{};
    sigemptyset(&signals);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
      sigaddset(&signals, signal);
    }
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    descriptor_ = signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
    if (descriptor_ < 0) {
      throw std::system_error(errno, std::generic_category(), "cannot wait for signals");
    }
  }
  ~EndSignals() { close(descriptor_); }
  EndSignals(const EndSignals&) = delete;
  EndSignals& operator=(const EndSignals&) = delete;

  int descriptor() const { return descriptor_; }

 private:
  int descriptor_ = -1;
};

// What systemd is told, if it is what has started the program.
class ServiceManager {
 public:
  explicit ServiceManager(Server& server) {
    uint64_t patience = 0;  // microseconds
    if (sd_watchdog_enabled(0, &patience) > 0) {
      constexpr int kQuestionsWithinPatience = 4;
      pulse_.emplace(server, std::chrono::microseconds(patience) / kQuestionsWithinPatience);
    }
  }

  // Clients are answered, with what there is.
  static void ready() { sd_notify(0, "READY=1"); }

  // A sweep has ended, well or not.
  static void tell(const kova_page::SweepState& state) {
    std::string status =
        state.up ? fmt::format("sweeps take {:.3f} s", *state.duration) : state.error;
    if (!state.trouble.empty() && state.trouble != state.error) {
      status += "; " + state.trouble;
    }
    sd_notifyf(0, "STATUS=%s", kova_host::printable(status).c_str());
  }

  // At each turn of the serving loop: the watchdog is fed when the loop has answered. What the
  // device library does is the worker's fate alone.
  void turn() {
    if (pulse_ && pulse_->beat()) {
      sd_notify(0, "WATCHDOG=1");
    }
  }

  static void stopping() { sd_notify(0, "STOPPING=1"); }

 private:
  std::optional<Pulse> pulse_;  // with a watchdog
};

void serve_until_signal(const EndSignals& signals, const Store& store, const Site& site,
                        Server& server) {
  ServiceManager manager(server);
  ServiceManager::ready();
  enum { kSignal, kStore, kServer, kCount };
  std::array<pollfd, kCount> descriptors{};
  descriptors[kSignal] = {signals.descriptor(), POLLIN, 0};
  descriptors[kStore] = {store.descriptor(), POLLIN, 0};
  descriptors[kServer] = {server.descriptor(), POLLIN, 0};
  while (store.failure().empty()) {
    if (poll(descriptors.data(), descriptors.size(), static_cast<int>(server.patience().count())) <
            0 &&
        errno != EINTR) {
      throw std::system_error(errno, std::generic_category(), "cannot wait for clients");
    }
    if ((descriptors[kSignal].revents & POLLIN) != 0) {
      return;
    }
    if ((descriptors[kStore].revents & POLLIN) != 0) {
      store.acknowledge();
      server.announce(site.newest_event());
      ServiceManager::tell(site.state());
    }
    server.serve();
    manager.turn();
  }
}

}  // namespace

int run_service(const Options& options) {
  const EndSignals signals;
  (void)std::signal(SIGPIPE, SIG_IGN);
  const Listener listener(options.listen_address);
  Store store(options.interval);
  Site site(store, {.machine = {.name = kova_host::host_name(), .simulated = options.simulated},
                    .local_hosts_only = listener.address().is_loopback()});
  Server server(listener, site, {.connections_per_address = options.connections_per_address});
  log(LogLevel::info, "listening on {}", listener.address().url());
  const Sampler sampler(options.host, store, {}, std::chrono::minutes(1), options.rules);
  serve_until_signal(signals, store, site, server);
  ServiceManager::stopping();
  const std::string failure = store.failure();
  if (!failure.empty()) {
    log(LogLevel::error, "{}", failure);
  }
  return failure.empty() ? EXIT_SUCCESS : kWrongArguments;
}

}  // namespace kova_exporter
