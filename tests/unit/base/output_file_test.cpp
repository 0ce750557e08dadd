#include "base/output_file.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "base/input_file.h"
#include "base/open_files.h"

namespace zeb {
namespace {

class writing_files : public testing::Test {
 protected:
  void SetUp() override {
    folder_ = testing::TempDir() + "zeb_output_file_test_" + std::to_string(getpid());
    std::filesystem::remove_all(folder_);
    std::filesystem::create_directory(folder_);
    name_ = folder_ + "/file";
  }
  void TearDown() override {
    std::filesystem::remove_all(folder_);
    EXPECT_TRUE(open_files.files.empty());
  }
  static void write(const std::string& name, const std::string& text) {
    std::ofstream(name) << text;
  }
  std::string text() const { return text_of_file(name_); }
  static std::string text_of_file(const std::string& name) {
    std::ifstream file(name);
    std::stringstream all;
    all << file.rdbuf();
    return all.str();
  }
  long files() const {
    return std::distance(std::filesystem::directory_iterator(folder_),
                         std::filesystem::directory_iterator());
  }
  std::string folder_, name_;
};

TEST_F(writing_files, the_old_file_stays_until_the_new_one_is_whole) {
  write(name_, "old");
  ASSERT_EQ(chmod(name_.c_str(), 0640), 0);
  const std::string much(200'000, 'x');
  {
    output_file dropped;
    ASSERT_TRUE(dropped.create(name_));
    dropped.put(much);
    EXPECT_EQ(text(), "old");
    EXPECT_EQ(files(), 2);
  }
  EXPECT_EQ(files(), 1);
  output_file file;
  ASSERT_TRUE(file.create(name_));
  file.put(much);
  file.print("%s%i\n", much.c_str(), 7);
  EXPECT_EQ(text(), "old");
  ASSERT_TRUE(file.publish());
  EXPECT_EQ(text(), much + much + "7\n");
  file.put("more");
  EXPECT_TRUE(file.close());
  EXPECT_EQ(text(), much + much + "7\nmore");
  EXPECT_EQ(files(), 1);
  struct stat status;
  ASSERT_EQ(stat(name_.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0640U);
}

TEST_F(writing_files, links_lead_on_and_relative_names_stay_what_they_were) {
  std::filesystem::create_directory(folder_ + "/below");
  write(folder_ + "/below/real", "old");
  std::filesystem::create_symlink("below/real", name_);
  output_file file;
  ASSERT_TRUE(file.create(name_));
  file.put("new");
  EXPECT_TRUE(file.close());
  EXPECT_TRUE(std::filesystem::is_symlink(name_));
  EXPECT_EQ(text_of_file(folder_ + "/below/real"), "new");
  const std::filesystem::path here = std::filesystem::current_path();
  std::filesystem::current_path(folder_);
  ASSERT_TRUE(file.create("relative"));
  std::filesystem::current_path(here);
  file.put("there");
  EXPECT_TRUE(file.close());
  EXPECT_EQ(text_of_file(folder_ + "/relative"), "there");
}

TEST_F(writing_files, a_file_in_use_is_refused_under_any_name) {
  write(name_, "old");
  const std::string other_name = folder_ + "/./file";
  output_file file;
  {
    input_file reader;
    ASSERT_TRUE(reader.open(name_));
    EXPECT_FALSE(file.create(other_name));
    EXPECT_FALSE(file.append(other_name));
    EXPECT_EQ(file.cause(), " (it is in use)");
  }
  output_file first;
  ASSERT_TRUE(first.create(folder_ + "/new"));
  EXPECT_FALSE(file.create(folder_ + "/./new"));
  first.discard();
  EXPECT_TRUE(file.create(folder_ + "/./new"));
  file.discard();
  ASSERT_TRUE(first.append(name_));
  EXPECT_FALSE(file.append(other_name));
  EXPECT_FALSE(file.create(other_name));
  EXPECT_TRUE(first.close());
}

TEST_F(writing_files, what_was_left_by_a_process_that_died_goes) {
  const std::string left = folder_ + "/.zeb-0123456789abcdef.part";
  write(left, "half");
  write(folder_ + "/.zeb-mine.part", "not ours");
  output_file being_written;
  ASSERT_TRUE(being_written.create(folder_ + "/other"));
  EXPECT_FALSE(std::filesystem::exists(left));
  output_file file;
  ASSERT_TRUE(file.create(name_));
  EXPECT_EQ(files(), 3);  // the one being written stays
  EXPECT_TRUE(file.close());
  EXPECT_TRUE(being_written.close());
}

// The file may grow to so many bytes.
void limit_files_to(rlim_t bytes) {
  rlimit limit{};
  getrlimit(RLIMIT_FSIZE, &limit);
  limit.rlim_cur = bytes;
  setrlimit(RLIMIT_FSIZE, &limit);
}

TEST_F(writing_files, a_part_that_was_written_is_taken_back) {
  std::signal(SIGXFSZ, SIG_IGN);
  const std::string piece(100, 'x');
  write(name_, piece);
  output_file appended;
  ASSERT_TRUE(appended.append(name_));
  output_file replaced;
  ASSERT_TRUE(replaced.create(folder_ + "/other"));
  replaced.put(piece);
  ASSERT_TRUE(replaced.publish());
  for (output_file* file : {&appended, &replaced}) {
    limit_files_to(250);
    file->put(piece);
    EXPECT_TRUE(file->flush());
    file->put(piece);
    EXPECT_FALSE(file->flush());
    EXPECT_EQ(file->cause(), " (File too large)");
    EXPECT_EQ(text_of_file(file->target()), piece + piece);
    limit_files_to(RLIM_INFINITY);
    file->put("the end");
    EXPECT_TRUE(file->close());
  }
  EXPECT_EQ(text(), piece + piece + "the end");
  EXPECT_EQ(text_of_file(folder_ + "/other"), piece + piece + "the end");
  output_file unpublished;
  ASSERT_TRUE(unpublished.create(name_));
  limit_files_to(50);
  unpublished.put(piece);
  EXPECT_FALSE(unpublished.publish());
  EXPECT_FALSE(unpublished.goes_on());
  EXPECT_FALSE(unpublished.close());
  limit_files_to(RLIM_INFINITY);
  EXPECT_EQ(text(), piece + piece + "the end");
  EXPECT_EQ(files(), 2);
}

TEST_F(writing_files, a_private_file_takes_the_place_of_whatever_others_put_there) {
  write(folder_ + "/victim", "mine");
  std::filesystem::create_symlink("victim", name_);
  output_file file;
  ASSERT_TRUE(file.create(name_, true));
  file.put("new");
  EXPECT_TRUE(file.close());
  EXPECT_EQ(text_of_file(folder_ + "/victim"), "mine");
  EXPECT_FALSE(std::filesystem::is_symlink(name_));
  EXPECT_EQ(text(), "new");
  input_file own;
  EXPECT_TRUE(own.open_own(name_));
  std::filesystem::create_symlink("victim", folder_ + "/link");
  EXPECT_FALSE(own.open_own(folder_ + "/link"));
  EXPECT_FALSE(own.open_own("/dev/null"));
  std::filesystem::create_hard_link(name_, folder_ + "/second name");
  EXPECT_FALSE(own.open_own(folder_ + "/second name"));
  std::filesystem::remove(folder_ + "/second name");
  ASSERT_EQ(chmod(name_.c_str(), 0666), 0);
  EXPECT_FALSE(own.open_own(name_));
  ASSERT_TRUE(file.create(name_, true));
  EXPECT_TRUE(file.close());
  EXPECT_TRUE(own.open_own(name_));
  std::filesystem::remove(name_);
  ASSERT_EQ(mkfifo(name_.c_str(), 0666), 0);
  ASSERT_TRUE(file.create(name_, true));
  EXPECT_TRUE(file.close());
  EXPECT_TRUE(own.open_own(name_));
}

// Trees that couldn't all be made are taken back from the file that holds others.
TEST_F(writing_files, what_was_put_is_taken_back) {
  const std::string piece(70000, 'x');
  output_file file;
  ASSERT_TRUE(file.create(name_));
  file.put("first");
  off_t start = file.position();
  file.put("second");
  file.go_back(start);
  EXPECT_TRUE(file.publish());
  start = file.position();
  file.put(piece + piece);
  file.put("third");
  file.go_back(start);
  file.put("last");
  EXPECT_TRUE(file.close());
  EXPECT_EQ(text(), "firstlast");
}

TEST_F(writing_files, failures_are_told) {
  output_file file;
  EXPECT_FALSE(file.create(folder_));
  EXPECT_EQ(file.fault(), "Is a directory");
  EXPECT_FALSE(file.create(folder_ + "/none/file"));
  EXPECT_FALSE(file.create(folder_ + "/" + std::string(256, 'x')));
  std::filesystem::create_symlink("loop", folder_ + "/loop");
  EXPECT_FALSE(file.create(folder_ + "/loop"));
  ASSERT_TRUE(file.create("/dev/full"));
  file.put("text");
  EXPECT_FALSE(file.close());
  EXPECT_EQ(file.cause(), " (No space left on device)");
  ASSERT_TRUE(file.create("/dev/null"));
  file.put("text");
  EXPECT_TRUE(file.close());
}

}  // namespace
}  // namespace zeb
