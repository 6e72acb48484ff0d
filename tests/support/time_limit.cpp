// Ends a GoogleTest test that takes more than the environment's KOVA_TEST_SECONDS, and tells where
// it was: the row of a table among others. ctest, whose limit is later, tells the test's name only.
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

namespace {

extern "C" void out_of_time(int) {
  // Prints what SCOPED_TRACE tells of. Not what a handler may do, but nothing goes on after it:
  // where it gets stuck, ctest's limit stands behind it.
  ADD_FAILURE() << "not done within the time limit";
  _exit(1);
}

class TimeLimit : public testing::EmptyTestEventListener {
 public:
  explicit TimeLimit(unsigned int seconds) : seconds_(seconds) {
    std::signal(SIGALRM, out_of_time);
  }
  void OnTestStart(const testing::TestInfo&) override { alarm(seconds_); }
  void OnTestEnd(const testing::TestInfo&) override { alarm(0); }

 private:
  unsigned int seconds_;
};

class Installation : public testing::Environment {
 public:
  void SetUp() override {
    if (const char* seconds = std::getenv("KOVA_TEST_SECONDS")) {
      testing::UnitTest::GetInstance()->listeners().Append(
          new TimeLimit(static_cast<unsigned int>(std::strtoul(seconds, nullptr, 10))));
    }
  }
};

[[maybe_unused]] const auto* const kInstallation =
    testing::AddGlobalTestEnvironment(new Installation);

}  // namespace
