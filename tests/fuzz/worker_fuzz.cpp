// What a worker may send to its parent: frames out of a stream, each taken for whatever message its
// type says, and made what the host works with.
#include "tests/fuzz/fuzz_device.h"
#include "tools/host/session/worker_messages.h"

namespace {

using kova_host::Frame;
using kova_host::MessageType;

template <typename Message>
Message reread(const Frame& frame) {
  auto message = kova_host::unpacked<Message>(frame);
  kova_host::FrameReader reader;
  reader.add(kova_host::packed(message));
  const auto again = reader.next();
  FUZZ_EXPECT(again && again->type == frame.type && !reader.next());
  return message;
}

void look_at(const Frame& frame) {
  FUZZ_EXPECT(frame.payload.size() <= kova_host::largest_message(frame.type));
  switch (frame.type) {
    case MessageType::answers:
      for (const auto& answer : reread<kova_host::Answers>(frame).answers) {
        (void)kova_host::answer_of(answer);
      }
      break;
    case MessageType::diagnosis:
      for (const auto& family :
           kova_host::diagnosis_of(reread<kova_host::DiagnosisAnswer>(frame)).families) {
        FUZZ_EXPECT(family.family != nullptr);
      }
      break;
    case MessageType::read:
      for (const auto& question : reread<kova_host::Read>(frame).questions) {
        (void)kova_host::question_of(question);
      }
      break;
    case MessageType::load:
      (void)kova_host::loading_of(reread<kova_host::Load>(frame));
      break;
    case MessageType::refused:
      (void)reread<kova_host::Refused>(frame);
      break;
    case MessageType::codes:
      (void)reread<kova_host::Codes>(frame);
      break;
    case MessageType::moments:
      (void)reread<kova_host::Moments>(frame);
      break;
    default:
      (void)reread<kova_host::DocumentAnswer>(frame);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  kova_host::FrameReader reader;
  // In two pieces, as a stream may come.
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  for (const std::string_view piece : {bytes.substr(0, size / 2), bytes.substr(size / 2)}) {
    reader.add(piece);
    try {
      while (const auto frame = reader.next()) {
        look_at(*frame);
      }
    } catch (const kova_host::BadMessage&) {
      return 0;
    }
  }
  return 0;
}
