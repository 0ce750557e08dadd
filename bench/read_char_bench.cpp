// Characters of a file through the two entries that every handler uses.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "language/input.h"
#include "language/lexer.h"
#include "support/program.h"

namespace {

constexpr std::size_t text_size = 8'000'000;

// A run file's text: words of 7 letters and blanks, lines of 80, no ";".
std::string write_text() {
  std::string text;
  while (text.size() < text_size) text += text.size() % 80 == 72 ? "abcdefg\n" : "abcdefg ";
  char name[] = "/tmp/zeb_bench_XXXXXX";
  std::FILE* file = fdopen(mkstemp(name), "wb");
  std::fwrite(text.data(), 1, text.size(), file);
  std::fclose(file);
  return name;
}

template <class reading>
void read_file(benchmark::State& state, reading read_all) {
  zeb_test::start_program();
  const std::string name = write_text();
  for (auto round : state) {
    zeb::push_file(name, {});
    read_all();
    zeb::pop_all();
    benchmark::DoNotOptimize(round);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(text_size));
  unlink(name.c_str());
}

void read_char_through_file(benchmark::State& state) {
  read_file(state, [] {
    unsigned sum = 0;
    for (int c = 0; (c = zeb::read_char()) != ';';) sum += static_cast<unsigned>(c);
    benchmark::DoNotOptimize(sum);
  });
}
BENCHMARK(read_char_through_file)->Unit(benchmark::kMillisecond);

void read_word_through_file(benchmark::State& state) {
  read_file(state, [] {
    while (zeb::read_word() > 0) {
    }
  });
}
BENCHMARK(read_word_through_file)->Unit(benchmark::kMillisecond);

}  // namespace
