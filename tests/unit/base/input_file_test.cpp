#include "base/input_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <thread>

namespace zeb {
namespace {

class reading_files : public testing::Test {
 protected:
  void TearDown() override { std::remove(name_.c_str()); }
  void write(const std::string& bytes) { std::ofstream(name_, std::ios::binary) << bytes; }
  std::string name_ = testing::TempDir() + "zeb_input_file_test_" + std::to_string(getpid());
};

// As gzip writes it; `level` 0 stores.
std::string compressed(std::string text, int level = 6) {
  z_stream stream{};
  deflateInit2(&stream, level, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY);
  std::string result(deflateBound(&stream, text.size()) + 32, 0);
  stream.next_in = reinterpret_cast<unsigned char*>(text.data());
  stream.avail_in = static_cast<unsigned>(text.size());
  stream.next_out = reinterpret_cast<unsigned char*>(result.data());
  stream.avail_out = static_cast<unsigned>(result.size());
  deflate(&stream, Z_FINISH);
  result.resize(stream.total_out);
  deflateEnd(&stream);
  return result;
}

// Text whose compressed form takes more than one piece, and that expands from one piece to many.
std::string long_text() {
  std::string text(3'000'000, 'a');
  unsigned state = 1;
  for (int i = 0; i < 300'000; ++i) {
    state = state * 1664525U + 1013904223U;
    text += static_cast<char>(state >> 24U);
  }
  return text;
}

TEST_F(reading_files, compressed_and_plain_text_give_the_same) {
  const std::string text = long_text();
  for (const std::string& bytes :
       {text, compressed(text), compressed(text, 0), compressed("") + compressed(text),
        compressed(text.substr(0, 1000)) + compressed(text.substr(1000)) +
            std::string(700, '\0')}) {
    write(bytes);
    input_file file;
    ASSERT_TRUE(file.open(name_));
    EXPECT_EQ(file.ahead(5), "aaaaa");
    EXPECT_EQ(file.get(), 'a');
    EXPECT_EQ(file.peek(2'999'998), 'a');
    EXPECT_EQ(file.rest(), text.substr(1)) << bytes.size();
    EXPECT_EQ(file.fault(), "");
    EXPECT_GE(file.most_bytes(), static_cast<std::int64_t>(text.size()));
    EXPECT_EQ(file.get(), -1);
    ASSERT_TRUE(file.rewind());
    std::string first(10, 0);
    EXPECT_EQ(file.read(first.data(), 10), 10U);
    EXPECT_EQ(first, text.substr(0, 10));
  }
}

TEST_F(reading_files, short_files_end) {
  for (const std::string& bytes : {std::string(), std::string("x"), std::string("\x1f")}) {
    write(bytes);
    input_file file;
    ASSERT_TRUE(file.open(name_));
    EXPECT_EQ(file.rest(), bytes);
    EXPECT_EQ(file.fault(), "");
  }
}

TEST_F(reading_files, every_cut_and_every_damage_of_compressed_text_is_told) {
  const std::string whole = compressed("one two three four five six seven eight nine ten");
  for (std::size_t length = 2; length < whole.size(); ++length) {
    write(whole.substr(0, length));
    input_file file;
    ASSERT_TRUE(file.open(name_));
    file.rest();
    EXPECT_EQ(file.fault(), "its gzip data end early") << length;
  }
  for (std::size_t place = 10; place < whole.size(); ++place) {
    std::string damaged = whole;
    damaged[place] = static_cast<char>(damaged[place] ^ 0x55);
    write(damaged);
    input_file file;
    ASSERT_TRUE(file.open(name_));
    file.rest();
    EXPECT_NE(file.fault(), "") << place;
  }
}

TEST_F(reading_files, a_pipe_is_read_once_whatever_comes_at_a_time) {
  ASSERT_EQ(mkfifo(name_.c_str(), 0600), 0);
  const std::string bytes = compressed("from a pipe");
  std::thread writer([&] {
    std::FILE* pipe = std::fopen(name_.c_str(), "wb");
    for (const char c : bytes) {
      std::fputc(c, pipe);
      std::fflush(pipe);
    }
    std::fclose(pipe);
  });
  input_file file;
  ASSERT_TRUE(file.open(name_));
  EXPECT_EQ(file.rest(), "from a pipe");
  EXPECT_FALSE(file.rewind());
  EXPECT_EQ(file.most_bytes(), -1);
  writer.join();
}

TEST_F(reading_files, what_cannot_be_opened_says_why) {
  input_file file;
  EXPECT_FALSE(file.open(name_));
  EXPECT_NE(file.fault(), "");
  EXPECT_EQ(file.cause(), "");  // the message that names the file says enough
  EXPECT_FALSE(file.open(testing::TempDir()));
  EXPECT_EQ(file.cause(), " (it is a directory)");
}

}  // namespace
}  // namespace zeb
