// Numbers: logarithms, powers, combinations, random draws.
#include <bit>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <utility>
#include <vector>

#include "base/errors.h"
#include "functions/arguments.h"
#include "functions/subjects.h"
#include "macro/assignment.h"
#include "macro/macro_state.h"
#include "macro/variables.h"

namespace zeb {
namespace {

double combinations() {
  const std::vector<double> v = bracketed_whole_values(2, 2);
  const double taken = v[0];
  const double from = v[1];
  if (from <= 0 || taken <= 0) error_end("Both numbers must be greater than 0");
  if (taken > from) {
    error_end_f("Combinatorial: %i taken from %i ?",
                static_cast<int>(std::min(taken, 2147483647.0)),
                static_cast<int>(std::min(from, 2147483647.0)));
  }
  // Exact as long as the products have at most 64 bits.
  long double result = 1;
  const double smaller = std::min(taken, from - taken);
  for (double i = 1; i <= smaller && std::isfinite(result); ++i)
    result = result * static_cast<long double>(from - smaller + i) / static_cast<long double>(i);
  return static_cast<double>(std::round(result));
}

// (2n - 3)!! rooted binary trees.
double cladograms() {
  const double n = bracketed_whole_values(1, 1)[0];
  if (!(n >= 1)) error_end("Give number");
  if (n > 150) error_end("Cannot calculate number of cladograms for more than 150 taxa!");
  double result = 1;
  for (int k = 3; k <= n; ++k) result *= 2 * k - 3;
  return result;
}

double power() {
  const std::vector<double> v = bracketed_values(2, 2);
  const double result = std::pow(v[0], v[1]);
  if (!std::isfinite(result)) error_end("Can't calculate power");
  return result;
}

double natural_logarithm() {
  const double x = bracketed_values(1, 1)[0];
  if (!(x > 0)) error_end("Cannot do natural logarithm of", value_text(x));
  return std::log(x);
}

double decimal_logarithm() {
  const double x = bracketed_values(1, 1)[0];
  if (!(x > 0)) error_end("Cannot do logarithm of", value_text(x));
  return std::log10(x);
}

// A value as the bits of a 32-bit number; what doesn't fit one has none.
std::uint32_t bits_of(double value) {
  if (!(value >= -2147483648.0 && value <= 4294967295.0)) return 0;
  return static_cast<std::uint32_t>(static_cast<std::int64_t>(value));
}

double bits_set() { return std::popcount(bits_of(bracketed_whole_values(1, 1)[0])); }

double random_number() {
  const std::vector<double> v = bracketed_whole_values(2, 2);
  if (!(v[0] >= 0 && v[1] >= 0))
    error_end("Random numbers can be drawn only between positive numbers");
  std::int64_t low = static_cast<std::int64_t>(std::min(v[0], 2147483647.0));
  std::int64_t high = static_cast<std::int64_t>(std::min(v[1], 2147483647.0));
  if (low > high) std::swap(low, high);
  return static_cast<double>(low + macros.generator.draw() % (high - low + 1));
}

double random_list() {
  const std::vector<double> v = bracketed_whole_values(1, 2);
  const double count = v[0];
  if (!(count >= 1) || count > 100'000'000) error_end("Give number");
  const auto n = static_cast<std::size_t>(count);
  std::vector<double> order(n);
  std::iota(order.begin(), order.end(), 0.0);
  std::size_t fixed = 0;
  if (v.size() > 1 && v[1] >= 0) {
    if (v[1] >= count) error_end("Give number");
    std::swap(order[0], order[static_cast<std::size_t>(v[1])]);
    fixed = 1;
  }
  for (std::size_t i = n; i > fixed + 1; --i) {
    const auto other = fixed + static_cast<std::size_t>(macros.generator.draw()) % (i - fixed);
    std::swap(order[i - 1], order[other]);
  }
  return write_list("Randomlist", order);
}

// Change between two state sets: steps between ranges, or 0/1 for sets that meet or don't.
double state_difference() {
  const std::vector<double> v = bracketed_whole_values(0, 3);
  if (v.size() < 3) error_end("Usage: statediff[S1 S2 0/1]");
  const auto a = bits_of(v[0]);
  const auto b = bits_of(v[1]);
  if (a & b || !a || !b) return 0;
  if (v[2] == 0) return 1;
  const int low_a = std::countr_zero(a);
  const int high_a = 31 - std::countl_zero(a);
  const int low_b = std::countr_zero(b);
  const int high_b = 31 - std::countl_zero(b);
  if (low_a > high_b) return low_a - high_b;
  return low_b > high_a ? low_b - high_a : 0;
}

// clang-format off
constexpr expression_function rows[] = {
    {"combin", "[X Y]", "combinations of X objects taken from Y", combinations},
    {"numclads", "[N]", "number of rooted binary cladograms for N taxa", cladograms},
    {"power", "[X Y]", "X to the power Y", power},
    {"log", "[N]", "natural logarithm", natural_logarithm, function_list::general, "listsize"},
    {"logten", "[N]", "decimal logarithm", decimal_logarithm, function_list::unlisted},
    {"numbits", "[N]", "bits set in N", bits_set},
    {"getrandom", "[from to]", "random number from..to, both included", random_number},
    {"randomlist", "[X Y]", "random order of 0 to X-1, Y the first (optional)", random_list},
    {"statediff", "[S1 S2 0/1]", "difference of state sets, additive with 1, non-additive with 0", state_difference, function_list::general, "states"},
};
// clang-format on

}  // namespace

const std::span<const expression_function> number_functions = rows;

}  // namespace zeb
