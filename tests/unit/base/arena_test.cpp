#include "base/arena.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "base/command.h"
#include "support/program.h"

namespace zeb {
namespace {

template <class work>
bool fails(work task) {
  const jump_context context;
  try {
    task();
  } catch (const command_unwinding&) {
    return true;
  }
  return false;
}

class arena_test : public testing::Test {
 protected:
  void SetUp() override {
    zeb_test::run_program("xwipe;");  // data of other tests lie in the arena
    unlock_all();
    output.output_mask = no_log | no_console | no_text_buffer;
    old_size_ = arena.size;
    create_arena(100'000);
  }
  void TearDown() override {
    arena.fail_countdown = -1;
    create_arena(old_size_);
    output.output_mask = 0;
  }

 private:
  std::size_t old_size_ = 0;
};

TEST_F(arena_test, blocks_are_aligned_apart_and_released_at_the_marks) {
  std::mt19937 random(3);
  const std::size_t free_before = arena_free();
  std::vector<std::span<unsigned char>> blocks;
  for (int i = 0; i < 200; ++i) {
    const std::size_t n = random() % 100;
    const std::size_t alignment = std::size_t{8} << (random() % 4);
    blocks.push_back(random() % 2 ? alloc_low<unsigned char>(n, alignment)
                                  : calloc_high<unsigned char>(n, alignment));
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(blocks.back().data()) % alignment, 0u);
    std::memset(blocks.back().data(), i, n);
  }
  for (std::size_t i = 0; i < blocks.size(); ++i) {
    for (const unsigned char c : blocks[i]) ASSERT_EQ(c, static_cast<unsigned char>(i));
  }
  release_command_memory();
  EXPECT_EQ(arena_free(), free_before);
}

TEST_F(arena_test, what_does_not_fit_ends_the_command_and_harms_nothing) {
  const std::size_t free_before = arena_free();
  EXPECT_TRUE(fails([] { alloc_low<int>(100'000); }));
  EXPECT_TRUE(fails([] { alloc_high<int>(SIZE_MAX / 2); }));
  EXPECT_TRUE(fails([] { alloc_table_low<double>(SIZE_MAX / 4, 16); }));
  EXPECT_EQ(arena_free(), free_before);
  arena.fail_countdown = 1;
  alloc_low<int>(1);
  EXPECT_TRUE(fails([] { alloc_low<int>(1); }));
  alloc_low<int>(1);
}

TEST_F(arena_test, releasing_a_lock_releases_the_later_ones_and_all_they_hold) {
  int tags[3] = {};
  const std::size_t free_before = arena_free();
  std::size_t free_at[3];
  for (int i = 0; i < 3; ++i) {
    free_at[i] = arena_free();
    alloc_low<int>(100);
    alloc_high<int>(50);
    lock(&tags[i]);
  }
  // Builds that look for overruns leave gaps between blocks.
  const std::size_t of_each = free_at[0] - free_at[1];
  EXPECT_GE(of_each, 600U);
  EXPECT_EQ(locked_bytes(&tags[1]), of_each);
  alloc_low<int>(10);
  release_command_memory();
  EXPECT_EQ(arena_free(), free_before - 3 * of_each);
  unlock(&tags[1]);
  EXPECT_EQ(tags[0], 1);
  EXPECT_EQ(tags[1], 0);
  EXPECT_EQ(tags[2], 0);
  EXPECT_EQ(arena_free(), free_at[1]);
  unlock(&tags[1]);  // no lock: nothing happens
  EXPECT_EQ(arena_free(), free_at[1]);
  unlock_all();
  EXPECT_EQ(arena_free(), free_before);
}

const int* lapsing[3];
int lapsed = 0;
void note_lapsing(const int* tag) {
  if (lapsed < 3) lapsing[lapsed] = tag;
  ++lapsed;
}

TEST_F(arena_test, hooks_are_told_of_every_lock_that_lapses) {
  static const bool added = (add_unlock_hook(note_lapsing), true);
  ASSERT_TRUE(added);
  int tags[3] = {};
  for (int& tag : tags) lock(&tag);
  lapsed = 0;
  unlock(&tags[1]);
  EXPECT_EQ(lapsed, 2);
  EXPECT_EQ(lapsing[0], &tags[2]);
  EXPECT_EQ(lapsing[1], &tags[1]);
  unlock_all();
}

TEST_F(arena_test, wrong_locks_are_errors) {
  std::vector<int> tags(51);
  for (int i = 0; i < 50; ++i) lock(&tags[static_cast<std::size_t>(i)]);
  EXPECT_TRUE(fails([&] { lock(&tags[50]); }));
  EXPECT_TRUE(fails([] { lock(nullptr); }));
  EXPECT_TRUE(fails([] {
    int stranger = 2;
    unlock(&stranger);
  }));
  EXPECT_TRUE(fails([] { free_to_low(arena.base + 90'000); }));
  EXPECT_EQ(arena.lock_count, 50);
  unlock_all();  // the tags go with this test
}

TEST_F(arena_test, commands_run_by_a_command_leave_its_memory_alone) {
  const std::span<int> mine = alloc_low<int>(10);
  mine[0] = 7;
  std::byte* const low = arena.low;
  {
    const arena_marks_scope scope;
    alloc_low<int>(10)[0] = 8;
    release_command_memory();
    EXPECT_EQ(mine[0], 7);
    EXPECT_EQ(arena.low, low);
  }
  release_command_memory();
  EXPECT_EQ(arena_in_use(), static_cast<std::size_t>(arena.low_mark - arena.base));
}

}  // namespace
}  // namespace zeb
