// Frames, and the messages' types to and from the host's own.
#include "tools/host/session/worker_messages.h"

#include <cmath>
#include <utility>

namespace kova_host {
namespace {

struct Head {
  uint32_t type = 0;
  uint32_t size = 0;
};

constexpr uint32_t kLongestText = 64U << 10;  // of one item

// What the JSON library takes for text.
bool is_utf8(const std::string& text) {
  return JsonPtr(json_stringn(text.data(), text.size())) != nullptr;
}

}  // namespace

std::string_view Unpacker::take(size_t size) {
  if (size > rest_.size()) {
    throw BadMessage("a field beyond the end of its message");
  }
  const std::string_view taken = rest_.substr(0, size);
  rest_.remove_prefix(size);
  return taken;
}

uint32_t largest_message(MessageType type) {
  switch (type) {
    case MessageType::read:
    case MessageType::answers:
    case MessageType::read_codes:
    case MessageType::codes:
    case MessageType::leave_out:
    case MessageType::redacted:
    case MessageType::redacted_codes:
    case MessageType::load:  // the codes whose words are private
      return kLargeMessage;
    case MessageType::document:
      return 4 * kLargeMessage;
    case MessageType::moments:  // of the largest recording that can be read
      return 64 * kLargeMessage;
    case MessageType::hello:
    case MessageType::start:
    case MessageType::stop:
    case MessageType::capability:
    case MessageType::write:
    case MessageType::diagnose:
    case MessageType::set_time:
    case MessageType::recording_trouble:
    case MessageType::end_recording:
    case MessageType::recorded_codes:
    case MessageType::welcome:
    case MessageType::refused:
    case MessageType::loaded:
    case MessageType::done:
    case MessageType::diagnosis:
    case MessageType::text:
      return kSmallMessage;
  }
  return 0;
}

std::optional<Frame> FrameReader::next() {
  Head head;
  if (bytes_.size() < sizeof head) {
    return std::nullopt;
  }
  std::memcpy(&head, bytes_.data(), sizeof head);
  const auto type = static_cast<MessageType>(head.type);
  const uint32_t largest = largest_message(type);
  if (largest == 0) {
    throw BadMessage("a message of no known type");
  }
  if (head.size > largest) {
    throw BadMessage("a message that is too large");
  }
  if (bytes_.size() - sizeof head < head.size) {
    return std::nullopt;
  }
  Frame frame{type, bytes_.substr(sizeof head, head.size)};
  bytes_.erase(0, sizeof head + head.size);
  return frame;
}

std::string frame_text(MessageType type, const std::string& payload) {
  if (payload.size() > largest_message(type)) {
    throw BadMessage("a message that is too large");
  }
  const Head head{static_cast<uint32_t>(type), static_cast<uint32_t>(payload.size())};
  std::string text(reinterpret_cast<const char*>(&head), sizeof head);
  return text + payload;
}

Read packed_questions(std::span<const ItemQuestion> questions) {
  Read read;
  read.questions.reserve(questions.size());
  for (const ItemQuestion& question : questions) {
    read.questions.push_back({question.id, question.kind ? static_cast<uint8_t>(*question.kind)
                                                         : PackedQuestion::kNull});
  }
  return read;
}

ItemQuestion question_of(const PackedQuestion& packed) {
  if (packed.kind == PackedQuestion::kNull) {
    return {packed.id, std::nullopt};
  }
  if (packed.kind > static_cast<uint8_t>(ValueKind::text)) {
    throw BadMessage("a value of no known kind");
  }
  return {packed.id, static_cast<ValueKind>(packed.kind)};
}

PackedAnswer packed_answer(const ItemAnswer& answer) {
  PackedAnswer packed{answer.status, {}};
  if (const auto* integer = std::get_if<int64_t>(&answer.value)) {
    packed.value.integer = *integer;
  } else if (const auto* real = std::get_if<double>(&answer.value)) {
    packed.value.real = *real;
  } else if (const auto* text = std::get_if<std::string>(&answer.value)) {
    packed.value.text = text->substr(0, kLongestText);
  }
  return packed;
}

ItemAnswer answer_of(const PackedAnswer& packed) {
  ItemAnswer answer{packed.status};
  if (packed.value.integer) {
    answer.value = *packed.value.integer;
  } else if (packed.value.real) {
    if (!std::isfinite(*packed.value.real)) {
      throw BadMessage("a value that is no number");
    }
    answer.value = *packed.value.real;
  } else if (packed.value.text) {
    if (packed.value.text->size() > kLongestText || !is_utf8(*packed.value.text)) {
      throw BadMessage("a text that no item can have");
    }
    answer.value = *packed.value.text;
  }
  return answer;
}

Load packed_loading(const Loading& loading) {
  Load load;
  load.module = loading.host.module;
  load.simulate = loading.host.simulate;
  load.machine = loading.host.machine;
  if (loading.recording) {
    load.recording = loading.recording->file.native();
    load.private_codes = loading.recording->private_codes;
  }
  load.replay = loading.replay;
  return load;
}

Loading loading_of(const Load& packed) {
  Loading loading;
  loading.host = {packed.module, packed.simulate, packed.machine};
  if (packed.recording) {
    loading.recording = {*packed.recording, packed.private_codes};
  }
  loading.replay = packed.replay;
  return loading;
}

DiagnosisAnswer packed_diagnosis(const DeviceDiagnosis& diagnosis) {
  DiagnosisAnswer packed;
  for (const LibraryAttempt& attempt : diagnosis.attempts) {
    packed.attempts.push_back({attempt.file, attempt.exists, attempt.error});
  }
  packed.library = diagnosis.library;
  packed.has_read_entry = diagnosis.has_read_entry;
  packed.has_write_entry = diagnosis.has_write_entry;
  for (const FamilyPresence& presence : diagnosis.families) {
    packed.families.push_back({static_cast<uint32_t>(presence.family - item_data().data()),
                               {presence.answer.status, presence.answer.word},
                               presence.present});
  }
  return packed;
}

DeviceDiagnosis diagnosis_of(const DiagnosisAnswer& packed) {
  DeviceDiagnosis diagnosis;
  for (const PackedAttempt& attempt : packed.attempts) {
    diagnosis.attempts.push_back({attempt.file, attempt.exists, attempt.error});
  }
  diagnosis.library = packed.library;
  diagnosis.has_read_entry = packed.has_read_entry;
  diagnosis.has_write_entry = packed.has_write_entry;
  for (const PackedFamily& family : packed.families) {
    if (family.number >= item_data().size()) {
      throw BadMessage("a family that there is not");
    }
    diagnosis.families.push_back(
        {&item_data()[family.number], {family.answer.status, family.answer.word}, family.present});
  }
  return diagnosis;
}

}  // namespace kova_host
