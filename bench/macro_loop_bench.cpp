// Loops of the macro language: what a round costs, command look-up and expansions included.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

#include "support/program.h"

namespace {

constexpr int rounds = 1'000'000;

void run_loop(benchmark::State& state, const std::string& names, const std::string& body) {
  const std::string text = "macro=; " + names + " loop 1 " + std::to_string(rounds) + " " + body +
                           " stop quote '0'; macro-;";
  for (auto round : state) {
    benchmark::DoNotOptimize(zeb_test::run_program(text));
    benchmark::DoNotOptimize(round);
  }
  state.SetItemsProcessed(state.iterations() * rounds);
}

void loop_with_assignment(benchmark::State& state) { run_loop(state, "", "set 0 '0' + 1;"); }
BENCHMARK(loop_with_assignment)->Unit(benchmark::kMillisecond);

void loop_with_names_and_branch(benchmark::State& state) {
  run_loop(state, "var: sum last;",
           "set last #1 * 2; if ('last' > 3) set sum 'last' + 'sum'; else set sum 0; end");
}
BENCHMARK(loop_with_names_and_branch)->Unit(benchmark::kMillisecond);

void loop_over_array(benchmark::State& state) {
  run_loop(state, "var: counts[10 10];", "set counts[3 7] ++;");
}
BENCHMARK(loop_over_array)->Unit(benchmark::kMillisecond);

}  // namespace
