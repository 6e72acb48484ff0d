// Keeps a worker at work.
#include "tools/host/session/worker_host.h"

#include <fmt/format.h>

#include <algorithm>
#include <thread>
#include <utility>

#include "include/kova_iot.h"

namespace kova_host {
namespace {

using std::chrono::milliseconds;

constexpr int kDeathsToBeLeftOut = 3;
constexpr std::chrono::minutes kLeftOutFor{10};
// Deaths in a row that cost no pause; then it doubles with each.
constexpr int kFreeDeaths = 3;
constexpr milliseconds kFirstPause{100};
constexpr milliseconds kLongestPause{60'000};
constexpr milliseconds kLongestWait{1000};  // for the end of a pause

milliseconds pause_after(int deaths) {
  if (deaths <= kFreeDeaths) {
    return milliseconds(0);
  }
  return std::min(kFirstPause * (1 << std::min(deaths - kFreeDeaths - 1, 10)), kLongestPause);
}

// The items that are read by this code.
std::vector<uint32_t> items_of_code(uint32_t code) {
  std::vector<uint32_t> ids;
  for (const FamilyData& family : item_data()) {
    for (const Item& item : family.items(family.instances ? family.instances->max : 1)) {
      const auto& codes = item.facts.codes;
      if (std::find(codes.begin(), codes.end(), code) != codes.end()) {
        ids.push_back(item.id);
      }
    }
  }
  return ids;
}

ItemAnswer no_answer(const std::string& reason) {
  return {IOT_STATUS_READ_FAILED, {}, reason};
}

}  // namespace

WorkerHost::~WorkerHost() {
  if (link_ != nullptr) {
    if (const std::string trouble = link_->part(); !trouble.empty()) {
      tell(WorkerEvent::bad_end, trouble);
    }
  }
}

void WorkerHost::tell(WorkerEvent event, const std::string& text) const {
  if (settings_.tell) {
    settings_.tell(event, text);
  }
}

// ----- The worker's life -----

void WorkerHost::make_worker() {
  link_ = std::make_unique<WorkerLink>(settings_);
  if (loading_->recording) {
    link_->records();
  }
  link_->ask(Hello());
  link_->ask(packed_loading(*loading_));
  (void)item_data();  // which is wanted later, and costs no time while the worker loads
}

Loaded WorkerHost::load(const Loading& loading) {
  loading_ = loading;
  try {
    wait_for_turn();
    make_worker();
    (void)link_->answer<Welcome>();
    const auto loaded = link_->answer<LoadedAnswer>();
    return {loaded.module_file, loaded.recorded_ms};
  } catch (const WorkerDeath& death) {
    note(death);
    throw;
  }
}

void WorkerHost::start_worker() {
  make_worker();
  (void)link_->answer<Welcome>();
  (void)link_->answer<LoadedAnswer>();
  leave_out_codes_of_worker(*link_);
  if (time_) {
    link_->ask(SetTime{*time_});
    (void)link_->answer<Done>();
  }
  if (started_) {
    link_->ask(Start());
    const uint32_t status = link_->answer<Done>().status;
    if (status != IOT_STATUS_SUCCESS) {
      throw HostError(Fault::no_device, "the module did not start again", status);
    }
  }
}

WorkerLink& WorkerHost::link() {
  if (link_ != nullptr) {
    return *link_;
  }
  wait_for_turn();
  try {
    start_worker();
  } catch (const WorkerDeath&) {
    throw;
  } catch (...) {
    link_.reset();
    throw;
  }
  return *link_;
}

void WorkerHost::wait_for_turn() const {
  const auto pause = std::chrono::duration_cast<milliseconds>(not_before_ - Clock::now());
  if (pause > kLongestWait) {
    throw WorkerDeath(WorkerDeath::Cause::not_started, 0, {},
                      fmt::format("{}; it is started again in {} s", last_reason_,
                                  std::chrono::ceil<std::chrono::seconds>(pause).count()));
  }
  std::this_thread::sleep_until(not_before_);
}

bool WorkerHost::survives(const WorkerDeath& death) const {
  using Cause = WorkerDeath::Cause;
  return !loading_->recording && death.cause() != Cause::out_of_time &&
         death.cause() != Cause::not_started &&
         (death.cause() != Cause::hung || settings_.outlives_hangs);
}

void WorkerHost::note(const WorkerDeath& death) {
  if (death.cause() == WorkerDeath::Cause::not_started) {
    return;
  }
  link_.reset();
  last_reason_ = death.what();
  not_before_ = Clock::now() + pause_after(++deaths_in_a_row_);
  switch (death.subject().kind) {
    case CallSubject::Kind::item:
      return leave_out(items_, death);
    case CallSubject::Kind::device_code:
      return leave_out(codes_, death);
    case CallSubject::Kind::module:
      tell(WorkerEvent::trouble, death.what());
  }
}

// The first death is told, and that it has been enough.
void WorkerHost::leave_out(std::map<uint32_t, Record>& records, const WorkerDeath& death) {
  Record& record = records[death.subject().number];
  record.reason = death.reason(settings_.limit_seconds);
  if (++record.deaths < kDeathsToBeLeftOut) {
    if (record.deaths == 1) {
      tell(WorkerEvent::trouble, death.what());
    }
    return;
  }
  record.left_out_until = Clock::now() + kLeftOutFor;
  if (record.deaths == kDeathsToBeLeftOut) {
    tell(WorkerEvent::trouble,
         fmt::format("{} is left out: {}, {} times in a row", subject_text(death.subject()),
                     record.reason, record.deaths));
  }
  if (&records == &codes_) {
    for (const uint32_t id : items_of_code(death.subject().number)) {
      items_[id] = record;
    }
  }
}

void WorkerHost::leave_out_codes_of_worker(WorkerLink& link) {
  LeaveOut message;
  for (const auto& [code, record] : codes_) {
    if (record.deaths >= kDeathsToBeLeftOut) {
      message.codes.push_back(code);
    }
  }
  link.ask(message);
  (void)link.answer<Done>();
}

// One more death is enough for them to be left out again.
void WorkerHost::retry_what_was_left_out() {
  const auto now = Clock::now();
  bool any_code = false;
  for (auto* records : {&items_, &codes_}) {
    for (auto& [number, record] : *records) {
      if (record.deaths >= kDeathsToBeLeftOut && now >= record.left_out_until) {
        record.deaths = kDeathsToBeLeftOut - 1;
        any_code = any_code || records == &codes_;
      }
    }
  }
  if (any_code && link_ != nullptr) {
    leave_out_codes_of_worker(*link_);
  }
}

void WorkerHost::forget_deaths_of(uint32_t id) {
  if (const auto record = items_.find(id); record != items_.end()) {
    tell(WorkerEvent::recovery, subject_text({CallSubject::Kind::item, id}) + " answers again");
    items_.erase(record);
  }
}

// ----- The work -----

template <typename Work>
auto WorkerHost::persist(const Work& work) {
  for (;;) {
    try {
      return work(link());
    } catch (const WorkerDeath& death) {
      note(death);
      // Sooner or later the code is left out. What has no code has no such hope.
      if (!survives(death) || death.subject().kind != CallSubject::Kind::device_code) {
        throw;
      }
    }
  }
}

uint32_t WorkerHost::start() {
  started_ = false;  // the module is started here, after a death too
  const uint32_t status = persist([](WorkerLink& link) {
    link.ask(Start());
    return link.answer<Done>().status;
  });
  started_ = status == IOT_STATUS_SUCCESS;
  return status;
}

void WorkerHost::end() {
  if (!std::exchange(started_, false) || link_ == nullptr || link_->is_over()) {
    return;
  }
  try {
    link_->hurry();
    link_->ask(Stop());
    (void)link_->answer<Done>();
  } catch (const WorkerDeath& death) {
    link_.reset();
    tell(WorkerEvent::bad_end, death.what());
  } catch (const CallGivenUp&) {
    link_.reset();
  }
}

Document WorkerHost::capability() {
  return persist([](WorkerLink& link) {
    link.ask(Capability());
    return link.answer_as<DocumentAnswer>([](const DocumentAnswer& answer) {
      Document document{answer.status, nullptr};
      if (answer.status == IOT_STATUS_SUCCESS) {
        document.document.reset(
            json_loadb(answer.json.data(), answer.json.size(), JSON_ALLOW_NUL, nullptr));
        if (!json_is_object(document.document.get())) {
          throw BadMessage("a document that is none");
        }
      }
      return document;
    });
  });
}

std::vector<ItemAnswer> WorkerHost::read(std::span<const ItemQuestion> questions) {
  std::vector<ItemAnswer> answers(questions.size());
  retry_what_was_left_out();
  Places open;
  for (size_t i = 0; i < questions.size(); ++i) {
    const auto record = items_.find(questions[i].id);
    if (record != items_.end() && record->second.deaths >= kDeathsToBeLeftOut) {
      answers[i] = no_answer("left out: " + record->second.reason);
    } else {
      open.push_back(i);
    }
  }
  while (!open.empty()) {
    try {
      ask_all(questions, answers, open);
      deaths_in_a_row_ = 0;
    } catch (const WorkerDeath& death) {
      note(death);
      if (death.cause() == WorkerDeath::Cause::not_started) {
        for (const size_t place : open) {
          answers[place] = no_answer(last_reason_);
        }
        break;
      }
      if (!survives(death)) {
        throw;
      }
      if (death.subject().kind == CallSubject::Kind::item) {
        const auto culprit = std::find_if(open.begin(), open.end(), [&](size_t place) {
          return questions[place].id == death.subject().number;
        });
        if (culprit != open.end()) {
          answers[*culprit] = no_answer(death.reason(settings_.limit_seconds));
          open.erase(culprit);
        }
      }
    }
  }
  return answers;
}

// What is answered is taken out of `open`, also when the worker dies over the next.
void WorkerHost::ask_all(std::span<const ItemQuestion> questions, std::vector<ItemAnswer>& answers,
                         Places& open) {
  WorkerLink& worker = link();
  std::vector<ItemQuestion> asked;
  asked.reserve(open.size());
  for (const size_t place : open) {
    asked.push_back(questions[place]);
  }
  worker.ask(packed_questions(asked));
  while (!open.empty()) {
    const size_t done = asked.size() - open.size();
    const auto answer = worker.answer<Answers>({}, asked);
    const auto taken = worker.checked([&] {
      if (answer.answers.empty() || answer.answers.size() > open.size()) {
        throw BadMessage("more or fewer answers than questions");
      }
      std::vector<ItemAnswer> list;
      for (const PackedAnswer& packed : answer.answers) {
        list.push_back(answer_of(packed));
      }
      return list;
    });
    for (size_t i = 0; i < taken.size(); ++i) {
      answers[open[i]] = taken[i];
      if (!items_.empty()) {
        forget_deaths_of(asked[done + i].id);
      }
    }
    open.erase(open.begin(), open.begin() + static_cast<std::ptrdiff_t>(taken.size()));
  }
}

uint32_t WorkerHost::write(uint32_t id, const Number& number) {
  Write message;
  message.id = id;
  if (const auto* integer = std::get_if<int64_t>(&number)) {
    message.value.integer = *integer;
  } else {
    message.value.real = std::get<double>(number);
  }
  const CallSubject subject{CallSubject::Kind::item, id};
  WorkerLink& worker = link();
  try {
    worker.ask(message, subject);
    return worker.answer<Done>(subject).status;
  } catch (const WorkerDeath& death) {
    note(death);
    throw;
  }
}

std::vector<DeviceAnswer> WorkerHost::read_codes(std::span<const uint32_t> codes) {
  return persist([&](WorkerLink& link) {
    link.ask(ReadCodes{{codes.begin(), codes.end()}});
    return link.answer_as<Codes>([&](const Codes& message) {
      if (!message.answers.empty() && message.answers.size() != codes.size()) {
        throw BadMessage("more or fewer answers than codes");
      }
      std::vector<DeviceAnswer> answers;
      for (const PackedWord& packed : message.answers) {
        answers.push_back({packed.status, packed.word});
      }
      return answers;
    });
  });
}

DeviceDiagnosis WorkerHost::diagnose() {
  return persist([](WorkerLink& link) {
    link.ask(Diagnose());
    return link.answer_as<DiagnosisAnswer>(diagnosis_of);
  });
}

std::vector<uint32_t> WorkerHost::redacted(std::span<const uint32_t> codes) {
  return persist([&](WorkerLink& link) {
    link.ask(Redacted{{codes.begin(), codes.end()}});
    return link.answer<RedactedCodes>().codes;
  });
}

std::vector<RecordedCode> WorkerHost::recorded_codes() {
  return persist([](WorkerLink& link) {
    link.ask(RecordedCodes());
    std::vector<RecordedCode> codes;
    for (const PackedMoment& packed : link.answer<Moments>().moments) {
      codes.push_back({packed.code, packed.milliseconds});
    }
    return codes;
  });
}

void WorkerHost::set_time(uint64_t milliseconds) {
  time_ = milliseconds;
  persist([milliseconds](WorkerLink& link) {
    link.ask(SetTime{milliseconds});
    return link.answer<Done>().status;
  });
}

std::string WorkerHost::recording_trouble() {
  return persist([](WorkerLink& link) {
    link.ask(RecordingTrouble());
    return link.answer<Text>().text;
  });
}

std::string WorkerHost::end_recording(bool keep) {
  return persist([keep](WorkerLink& link) {
    link.ask(EndRecording{keep});
    return link.answer<Text>().text;
  });
}

}  // namespace kova_host
