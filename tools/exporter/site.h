// What each path answers. One thread uses a site; it never waits for the device.
#pragma once

#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "tools/exporter/gzip.h"
#include "tools/exporter/http.h"
#include "tools/exporter/store.h"
#include "tools/page/api_document.h"
#include "tools/page/page_files.h"

namespace kova_exporter {

class Site {
 public:
  struct Options {
    kova_page::Machine machine;
    bool local_hosts_only = false;  // refuse a Host header that names another machine
  };

  // The store must outlive the site.
  Site(const Store& store, Options options);

  // The answer to one request. A HEAD request gets its body too; the server leaves it out.
  HttpResponse answer(const HttpRequest& request);

  // What is answered, for people too. Files that the page calls for are not among them.
  struct Route {
    std::string_view path;  // one that ends with "/" is followed by something, the root's apart
    std::string_view rest;  // what may follow, as it is documented
    std::string_view text;  // one line, without a full stop
    bool at_hand;           // made once a sweep at the most, whoever asks
    HttpResponse (*answer)(Site& site, const HttpRequest& request, const Target& target);
  };
  static std::span<const Route> routes();

  // True for a target whose answer is made once a sweep at the most, and false for any that is made
  // for each request, such as chosen items and their history.
  static bool is_at_hand(std::string_view target);

  // The newest sweep as a server-sent event, or without one how things stand; and the event that
  // tells only that.
  std::string newest_event() const;
  std::string status_event() const;
  kova_page::SweepState state() const { return current().state; }

 private:
  HttpResponse route(const HttpRequest& request, const Target& target);
  HttpResponse metrics(const HttpRequest& request);
  HttpResponse health() const;
  HttpResponse items(const HttpRequest& request);
  HttpResponse item(std::string_view name) const;
  HttpResponse history(const HttpRequest& request, const Target& target);
  HttpResponse file(const HttpRequest& request, const kova_page::PageFile& file);

  // The newest snapshot and how it stands now.
  struct Current {
    std::shared_ptr<const kova_page::Snapshot> snapshot;
    kova_page::SweepState state;
  };
  Current current() const;

  // What is made once of a snapshot, however many ask for it.
  struct Cached {
    std::shared_ptr<const kova_page::Snapshot> snapshot;
    SharedText text;
  };

  const Store& store_;
  Options options_;
  Cached plain_metrics_;
  Cached openmetrics_;
  Cached items_;
  Cached history_;  // of all items
  std::map<const kova_page::PageFile*, std::shared_ptr<const std::string>> compressed_files_;
};

}  // namespace kova_exporter
