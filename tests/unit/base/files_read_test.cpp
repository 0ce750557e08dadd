#include "base/files_read.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>

#include "base/input_file.h"

namespace zeb {
namespace {

const file_read& last_read() { return files_read.files.back(); }

TEST(files_read_test, tells_the_digest_of_what_was_read_last) {
  const std::string name = testing::TempDir() + "files_read_" + std::to_string(getpid());
  const auto write = [&name](const std::string& text) {
    std::ofstream(name, std::ios::binary) << text;
  };
  write("abc");
  input_file file;
  ASSERT_TRUE(file.open(name));
  EXPECT_EQ(last_read().bytes, 3);
  EXPECT_EQ(last_read().digest, "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  EXPECT_EQ(file.rest(), "abc");  // taking the digest hasn't moved the place of reading
  const std::size_t known = files_read.files.size();
  ASSERT_TRUE(file.open(name));
  EXPECT_EQ(last_read().versions, 1);
  write(std::string(1'000'000, 'a'));
  ASSERT_TRUE(file.open(name));
  EXPECT_EQ(files_read.files.size(), known);
  EXPECT_EQ(last_read().versions, 2);
  EXPECT_EQ(last_read().digest, "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
  file.close();
  unlink(name.c_str());
}

TEST(files_read_test, takes_no_digest_of_what_can_be_read_once) {
  input_file file;
  ASSERT_TRUE(file.open("/dev/null"));
  EXPECT_EQ(last_read().name, "/dev/null");
  EXPECT_EQ(last_read().bytes, -1);
  EXPECT_EQ(last_read().digest, "");
  const std::size_t known = files_read.files.size();
  ASSERT_TRUE(file.open("/dev/zero", false));
  EXPECT_EQ(files_read.files.size(), known);
}

}  // namespace
}  // namespace zeb
