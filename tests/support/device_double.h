// An in-memory device library: answers reads from a table, records every call in order, and fails
// the test when a code is asked that the test did not announce.
#pragma once

#include <cstdint>
#include <map>
#include <ostream>
#include <vector>

class DeviceDouble {
 public:
  struct Call {
    enum Kind { kRead, kWrite } kind;
    std::uint32_t code;
    std::uint32_t value = 0;  ///< the word written; 0 for a read
    friend bool operator==(const Call&, const Call&) = default;
    friend void PrintTo(const Call& call, std::ostream* out);
  };

  /// Becomes the device of this process: get and set answer from it, and the families' read
  /// and write entries are set to them. The destructor takes them away again.
  DeviceDouble();
  ~DeviceDouble();
  DeviceDouble(const DeviceDouble&) = delete;
  DeviceDouble& operator=(const DeviceDouble&) = delete;

  // The entries a device library exports; they act on the living double.
  static std::uint32_t get(std::uint32_t code, std::uint32_t* value);
  static std::uint32_t set(std::uint32_t code, std::uint32_t value);

  std::map<std::uint32_t, std::uint32_t> values;             ///< what reads answer
  std::map<std::uint32_t, std::uint32_t> read_status;        ///< codes whose reads fail, and how
  std::map<std::uint32_t, std::uint32_t> stored_on_failure;  ///< words that failing reads store
  std::map<std::uint32_t, std::uint32_t> write_status;       ///< 0 for writes that are accepted
  std::vector<Call> calls;

  /// Codes unknown to the tables fail quietly instead of failing the test.
  bool lenient = false;

  /// The n-th call from now (counted from 1) fails; 0 for none. A failing read may store a word.
  unsigned int failing_call = 0;
  bool failing_call_stores = false;

  /// Codes read since construction or the last clear of `calls`, in order.
  [[nodiscard]] std::vector<std::uint32_t> codes_read() const;

 private:
  bool fails_now();
  std::uint32_t read(std::uint32_t code, std::uint32_t* value);
  std::uint32_t write(std::uint32_t code, std::uint32_t value);
};
