// Signs of life on stderr while something slow runs.
#pragma once

#include <cstddef>
#include <string>

#include "tools/host/model/item.h"

namespace kovactl {

// What the command is at: "reading 37/412, PoE 1 power", or "starting the module, 3 s" without a
// total. One at a time; the attendant shows it once it has lived for half a second, and it takes
// the line away again when it is destroyed. Silent unless stderr is a terminal that can draw.
class Progress {
 public:
  explicit Progress(std::string label, size_t total = 0);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // The next of the total is this item's turn.
  void advance(const kova_host::Item& item);
  // One more of the total is done, where that is samples rather than items.
  void advance();
};

// For the attendant, from its own thread: shows the progress there is, if it is time to.
void draw_progress();

// Takes the line away, for good: what is drawn afterwards stands on a clean line.
void end_progress();

}  // namespace kovactl
