// What becomes of a file that is replaced, and of the links on the way to it.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "tools/host/system/atomic_file.h"
#include "tools/host/system/descriptor_output.h"

namespace kova_host {
namespace {

namespace fs = std::filesystem;

class AtomicFile : public testing::Test {
 public:
  ~AtomicFile() override { fs::remove_all(folder_); }

 protected:
  AtomicFile() {
    std::string name = testing::TempDir() + "atomic.XXXXXX";
    folder_ = mkdtemp(name.data());
  }
  fs::path path(const char* name) const { return folder_ / name; }
  void write(const char* name, mode_t mode) const {
    std::ofstream(path(name)) << "old";
    chmod(path(name).c_str(), mode);
  }
  std::string text(const char* name) const {
    std::ostringstream text;
    text << std::ifstream(path(name)).rdbuf();
    return text.str();
  }
  mode_t mode(const char* name) const {
    struct stat status = {};
    stat(path(name).c_str(), &status);
    return status.st_mode & 07777;
  }
  std::string refusal(const char* name) const {
    try {
      replace_file(path(name), "new");
    } catch (const OutputError& error) {
      return error.what();
    }
    return "";
  }
  size_t files() const {
    return static_cast<size_t>(std::distance(fs::directory_iterator(folder_), {}));
  }

  fs::path folder_;
};

TEST_F(AtomicFile, KeepsTheModeOfTheOldAndLeavesTheUmaskOfANewOne) {
  const mode_t before = umask(027);
  for (const mode_t old : {0600U, 0604U, 0664U}) {
    write("file", old);
    replace_file(path("file"), "new");
    EXPECT_EQ(mode("file"), old);
    EXPECT_EQ(text("file"), "new");
  }
  replace_file(path("fresh"), "new");
  EXPECT_EQ(mode("fresh"), 0640U);
  umask(before);
}

TEST_F(AtomicFile, RootLeavesAFileItsOwner) {
  write("file", 0640);
  const uid_t owner = geteuid() == 0 ? 12345 : geteuid();
  ASSERT_EQ(chown(path("file").c_str(), owner, static_cast<gid_t>(-1)), 0);
  replace_file(path("file"), "new");
  struct stat status = {};
  stat(path("file").c_str(), &status);
  EXPECT_EQ(status.st_uid, owner);
}

TEST_F(AtomicFile, FollowsLinksToWhereTheyLead) {
  fs::create_directory(path("real"));
  fs::create_directory_symlink("real", path("way"));
  fs::create_symlink(path("way") / "none yet", path("real/second"));
  fs::create_symlink("way/second", path("first"));
  replace_file(path("first"), "new");
  EXPECT_EQ(text("real/none yet"), "new");
  EXPECT_TRUE(fs::is_symlink(path("first")) && fs::is_symlink(path("real/second")));
  EXPECT_EQ(files(), 3U);
}

TEST_F(AtomicFile, RefusesWhatIsNoFileToReplace) {
  fs::create_directory(path("folder"));
  fs::create_symlink("loop", path("loop"));
  ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
  for (const auto& [name, reason] : {std::pair("pipe", "no plain file"),
                                     {"folder", "no plain file"},
                                     {"folder/", "Is a directory"},
                                     {"loop", "Too many levels"},
                                     {"none/file", "No such file or directory"},
                                     {"pipe/file", "Not a directory"}}) {
    EXPECT_NE(refusal(name).find(reason), std::string::npos) << name << ": " << refusal(name);
    EXPECT_THROW(require_replaceable(path(name)), OutputError) << name;
  }
  require_replaceable(path("fine"));
  EXPECT_EQ(files(), 3U);
}

TEST_F(AtomicFile, TidiesUpAfterAKilledRunAlone) {
  write(".file.aaaaaa", 0600);   // nobody writes it any more
  write(".file.bbbbbb", 0600);   // somebody does
  write(".file.keep.it", 0600);  // another name
  const int writer = open(path(".file.bbbbbb").c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_EQ(flock(writer, LOCK_EX), 0);
  replace_file(path("file"), "new");
  EXPECT_FALSE(fs::exists(path(".file.aaaaaa")));
  EXPECT_TRUE(fs::exists(path(".file.bbbbbb")) && fs::exists(path(".file.keep.it")));
  close(writer);
}

TEST(Strangers, AreTheOthersInAFolderThatEverybodyMayWriteTo) {
  constexpr uid_t kRoot = 0;
  constexpr uid_t kCaller = 1000;
  constexpr uid_t kStranger = 1001;
  for (const auto& [mode, folder_owner, owner, expected] :
       {std::tuple(01777, kRoot, kStranger, true),
        {01777, kRoot, kCaller, false},
        {01777, kRoot, kRoot, false},
        {01777, kStranger, kStranger, false},  // who owns the folder can do worse
        {0777, kRoot, kStranger, false},  // as the kernel: without the bit it is no such folder
        {01775, kRoot, kStranger, false}}) {
    struct stat folder = {};
    folder.st_mode = S_IFDIR | static_cast<mode_t>(mode);
    folder.st_uid = folder_owner;
    EXPECT_EQ(is_strangers(folder, owner, kCaller), expected) << mode << ' ' << owner;
  }
}

TEST_F(AtomicFile, AStrangersLinkOrFileIsNotTheCallers) {
  if (geteuid() != 0) {
    return;  // nobody else can make a file for somebody else; the rule itself is tested above
  }
  constexpr uid_t kStranger = 12345;
  write("target", 0600);
  write("bait", 0666);
  fs::create_symlink("target", path("link"));
  fs::create_directory_symlink(".", path("way"));
  for (const char* name : {"bait", "link", "way"}) {
    ASSERT_EQ(lchown(path(name).c_str(), kStranger, kStranger), 0);
  }
  chmod(folder_.c_str(), 01777);
  for (const char* name : {"bait", "link", "way/target"}) {
    EXPECT_NE(refusal(name).find("another user's"), std::string::npos) << name << refusal(name);
  }
  EXPECT_EQ(text("target") + text("bait"), "oldold");
  chmod(folder_.c_str(), 0755);
  EXPECT_EQ(refusal("link"), "");
  EXPECT_EQ(text("target"), "new");
}

}  // namespace
}  // namespace kova_host
