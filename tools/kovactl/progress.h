// Signs of life on stderr while something slow runs.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tools/host/model/item.h"
#include "tools/host/session/call_subject.h"

namespace kovactl {

// What the command is at: "reading 37/412, PoE 1 power", or "starting the module, 3 s" without a
// total. One at a time; it is shown once it has lived for half a second, and takes the line away
// again when it is destroyed. Silent unless stderr is a terminal that can draw.
class Progress {
 public:
  explicit Progress(std::string label, size_t total = 0);
  // Of a read of these items, in this order.
  Progress(std::string label, std::vector<kova_host::Item> items);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // One more of the total is done, where that is samples rather than items.
  void advance();
};

// Shows the progress there is, if it is time to; `subject` is what the device is at.
void draw_progress(const kova_host::CallSubject& subject = {});

}  // namespace kovactl
