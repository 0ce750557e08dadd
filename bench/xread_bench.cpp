// Reading a matrix: 5,000 taxa by 2,000 sites, from a file, as `procedure` does.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <random>
#include <string>

#include "matrix/matrix.h"
#include "matrix/matrix_memory.h"
#include "support/program.h"

namespace {

constexpr int taxa = 5000;
constexpr int sites = 2000;

std::string matrix_text() {
  std::mt19937 random(1);
  std::string text =
      "nstates 8; xread " + std::to_string(sites) + " " + std::to_string(taxa) + "\n&[dna]\n";
  for (int t = 0; t < taxa; ++t) {
    text += "taxon_" + std::to_string(t) + " ";
    for (int c = 0; c < sites; ++c) text += "ACGTACGTACGTACGTACGTACGTACGT-NRY"[random() % 32];
    text += "\n";
  }
  return text + ";\nproc/;\n";
}

void read_dna_matrix(benchmark::State& state) {
  const std::string text = matrix_text();
  for (auto round : state) {
    zeb_test::run_program(text);
    benchmark::DoNotOptimize(round);
  }
  if (!zeb::matrix.present) state.SkipWithError("the matrix wasn't read");
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                          static_cast<std::int64_t>(text.size()));
  state.counters["arena_bytes"] = static_cast<double>(zeb::arena_in_use());
  state.counters["estimate_bytes"] = zeb::matrix_memory_estimate(taxa, sites);
}
BENCHMARK(read_dna_matrix)->Unit(benchmark::kMillisecond);

}  // namespace
