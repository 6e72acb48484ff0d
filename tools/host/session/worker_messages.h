// What parent and worker say to each other: each message once, for both of them. The parent asks,
// the worker answers in the same order. Neither believes the other's lengths.
#pragma once

#include <bit>
#include <concepts>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>

#include "tools/host/session/device_host.h"

namespace kova_host {

inline constexpr uint32_t kWorkerVersion = 1;

enum class MessageType : uint32_t {
  // The parent's.
  hello = 1,
  load,
  leave_out,
  start,
  stop,
  capability,
  read,
  write,
  read_codes,
  diagnose,
  set_time,
  recording_trouble,
  end_recording,
  recorded_codes,
  redacted,
  // The worker's.
  welcome = 64,
  refused,
  loaded,
  done,
  document,
  answers,
  codes,
  diagnosis,
  text,
  moments,
  redacted_codes,
};

// A message that cannot be what it should be.
class BadMessage : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Writes fields one after the other.
class Packer {
 public:
  std::string text;

  template <typename... Fields>
  void operator()(const Fields&... fields) {
    (put(fields), ...);
  }

 private:
  template <typename Field>
  void put(const Field& field) {
    if constexpr (std::is_arithmetic_v<Field> || std::is_enum_v<Field>) {
      text.append(reinterpret_cast<const char*>(&field), sizeof field);
    } else {
      const_cast<Field&>(field).fields(*this);  // which only looks
    }
  }
  void put(const std::string& field) {
    put(static_cast<uint32_t>(field.size()));
    text += field;
  }
  template <typename Field>
  void put(const std::vector<Field>& list) {
    put(static_cast<uint32_t>(list.size()));
    for (const Field& field : list) {
      put(field);
    }
  }
  template <typename Field>
  void put(const std::optional<Field>& field) {
    put(static_cast<uint8_t>(field.has_value()));
    if (field) {
      put(*field);
    }
  }
};

// Reads them back. Throws BadMessage where the text does not hold them.
class Unpacker {
 public:
  explicit Unpacker(std::string_view text) : rest_(text) {}

  template <typename... Fields>
  void operator()(Fields&... fields) {
    (get(fields), ...);
  }

  bool at_end() const { return rest_.empty(); }

 private:
  std::string_view take(size_t size);

  template <typename Field>
  void get(Field& field) {
    if constexpr (std::is_same_v<Field, bool>) {
      uint8_t byte = 0;
      get(byte);
      field = byte != 0;
    } else if constexpr (std::is_arithmetic_v<Field> || std::is_enum_v<Field>) {
      std::memcpy(&field, take(sizeof field).data(), sizeof field);
    } else {
      field.fields(*this);
    }
  }
  void get(std::string& field) {
    uint32_t size = 0;
    get(size);
    field = take(size);
  }
  template <typename Field>
  void get(std::vector<Field>& list) {
    uint32_t size = 0;
    get(size);
    if (size > rest_.size()) {  // an element has a byte at least
      throw BadMessage("a list that is longer than its message");
    }
    list.clear();
    for (uint32_t i = 0; i < size; ++i) {
      get(list.emplace_back());
    }
  }
  template <typename Field>
  void get(std::optional<Field>& field) {
    uint8_t has_value = 0;
    get(has_value);
    field.reset();
    if (has_value != 0) {
      get(field.emplace());
    }
  }

  std::string_view rest_;
};

// ----- The messages: their types, the most bytes that they may have, their fields. -----

inline constexpr uint32_t kSmallMessage = 16U << 10;
inline constexpr uint32_t kLargeMessage = 1U << 20;

struct Hello {
  static constexpr auto kType = MessageType::hello;
  uint32_t version = kWorkerVersion;
  void fields(auto& a) { a(version); }
};

struct Welcome {
  static constexpr auto kType = MessageType::welcome;
  uint32_t version = kWorkerVersion;
  void fields(auto& a) { a(version); }
};

struct Load {
  static constexpr auto kType = MessageType::load;
  std::string module;
  bool simulate = false;
  std::optional<std::string> machine;
  std::optional<std::string> recording;
  std::string private_codes;
  bool replay = false;
  void fields(auto& a) { a(module, simulate, machine, recording, private_codes, replay); }
};

struct LeaveOut {
  static constexpr auto kType = MessageType::leave_out;
  std::vector<uint32_t> codes;
  void fields(auto& a) { a(codes); }
};

// A message of no fields.
template <MessageType Type>
struct Plain {
  static constexpr auto kType = Type;
  void fields(auto& /*a*/) {}
};
using Start = Plain<MessageType::start>;
using Stop = Plain<MessageType::stop>;
using Capability = Plain<MessageType::capability>;
using Diagnose = Plain<MessageType::diagnose>;
using RecordedCodes = Plain<MessageType::recorded_codes>;
using RecordingTrouble = Plain<MessageType::recording_trouble>;

struct PackedQuestion {
  static constexpr uint8_t kNull = 0xFF;
  uint32_t id = 0;
  uint8_t kind = kNull;
  void fields(auto& a) { a(id, kind); }
};

struct Read {
  static constexpr auto kType = MessageType::read;
  std::vector<PackedQuestion> questions;
  void fields(auto& a) { a(questions); }
};

// An integer, a real or a text, whichever is there.
struct PackedValue {
  std::optional<int64_t> integer;
  std::optional<double> real;
  std::optional<std::string> text;
  void fields(auto& a) { a(integer, real, text); }
};

struct Write {
  static constexpr auto kType = MessageType::write;
  uint32_t id = 0;
  PackedValue value;
  void fields(auto& a) { a(id, value); }
};

struct ReadCodes {
  static constexpr auto kType = MessageType::read_codes;
  std::vector<uint32_t> codes;
  void fields(auto& a) { a(codes); }
};

struct Redacted {
  static constexpr auto kType = MessageType::redacted;
  std::vector<uint32_t> codes;
  void fields(auto& a) { a(codes); }
};

struct RedactedCodes {
  static constexpr auto kType = MessageType::redacted_codes;
  std::vector<uint32_t> codes;
  void fields(auto& a) { a(codes); }
};

struct SetTime {
  static constexpr auto kType = MessageType::set_time;
  uint64_t milliseconds = 0;
  void fields(auto& a) { a(milliseconds); }
};

struct EndRecording {
  static constexpr auto kType = MessageType::end_recording;
  bool keep = false;
  void fields(auto& a) { a(keep); }
};

// A HostError that the worker has met instead.
struct Refused {
  static constexpr auto kType = MessageType::refused;
  uint8_t fault = 0;
  std::string message;
  std::optional<uint32_t> status;
  void fields(auto& a) { a(fault, message, status); }
};

struct LoadedAnswer {
  static constexpr auto kType = MessageType::loaded;
  std::string module_file;
  uint64_t recorded_ms = 0;
  void fields(auto& a) { a(module_file, recorded_ms); }
};

struct Done {
  static constexpr auto kType = MessageType::done;
  uint32_t status = 0;
  void fields(auto& a) { a(status); }
};

struct DocumentAnswer {
  static constexpr auto kType = MessageType::document;
  uint32_t status = 0;
  std::string json;
  void fields(auto& a) { a(status, json); }
};

struct PackedAnswer {
  uint32_t status = 0;
  PackedValue value;
  void fields(auto& a) { a(status, value); }
};

// The next answers to a Read. A slow bus's come in several messages, so that a worker that dies
// takes little along.
struct Answers {
  static constexpr auto kType = MessageType::answers;
  std::vector<PackedAnswer> answers;
  void fields(auto& a) { a(answers); }
};

struct PackedWord {
  uint32_t status = 0;
  uint32_t word = 0;
  void fields(auto& a) { a(status, word); }
};

struct Codes {
  static constexpr auto kType = MessageType::codes;
  std::vector<PackedWord> answers;
  void fields(auto& a) { a(answers); }
};

struct PackedAttempt {
  std::string file;
  bool exists = false;
  std::string error;
  void fields(auto& a) { a(file, exists, error); }
};

struct PackedFamily {
  uint32_t number = 0;  // in item_data()
  PackedWord answer;
  bool present = false;
  void fields(auto& a) { a(number, answer, present); }
};

struct DiagnosisAnswer {
  static constexpr auto kType = MessageType::diagnosis;
  std::vector<PackedAttempt> attempts;
  std::string library;
  bool has_read_entry = false;
  bool has_write_entry = false;
  std::vector<PackedFamily> families;
  void fields(auto& a) { a(attempts, library, has_read_entry, has_write_entry, families); }
};

struct PackedMoment {
  uint32_t code = 0;
  uint64_t milliseconds = 0;
  void fields(auto& a) { a(code, milliseconds); }
};

struct Moments {
  static constexpr auto kType = MessageType::moments;
  std::vector<PackedMoment> moments;
  void fields(auto& a) { a(moments); }
};

struct Text {
  static constexpr auto kType = MessageType::text;
  std::string text;
  void fields(auto& a) { a(text); }
};

// ----- Frames -----

struct Frame {
  MessageType type{};
  std::string payload;
};

// The most bytes of a message of this type; 0 for a type that there is not.
uint32_t largest_message(MessageType type);

// Takes a stream apart, from which messages come in pieces.
class FrameReader {
 public:
  void add(std::string_view bytes) { bytes_ += bytes; }

  // The next whole message. Throws BadMessage for one that is too large or of no known type, which
  // shows before it is whole.
  std::optional<Frame> next();

 private:
  std::string bytes_;
};

std::string frame_text(MessageType type, const std::string& payload);

// The frame of a message. Throws BadMessage if it would be too large.
template <typename Message>
std::string packed(const Message& message) {
  Packer packer;
  packer(message);
  return frame_text(Message::kType, packer.text);
}

// Throws BadMessage for another type, a field that lies beyond the end, and for what is left over.
template <typename Message>
Message unpacked(const Frame& frame) {
  if (frame.type != Message::kType) {
    throw BadMessage("an answer to another question");
  }
  Message message;
  Unpacker unpacker(frame.payload);
  unpacker(message);
  if (!unpacker.at_end()) {
    throw BadMessage("a message with too much in it");
  }
  return message;
}

// Between the host's own types and those that travel. From the worker's they throw BadMessage.
Read packed_questions(std::span<const ItemQuestion> questions);
ItemQuestion question_of(const PackedQuestion& packed);
PackedAnswer packed_answer(const ItemAnswer& answer);
ItemAnswer answer_of(const PackedAnswer& packed);
Load packed_loading(const Loading& loading);
Loading loading_of(const Load& packed);
DiagnosisAnswer packed_diagnosis(const DeviceDiagnosis& diagnosis);
DeviceDiagnosis diagnosis_of(const DiagnosisAnswer& packed);

}  // namespace kova_host
