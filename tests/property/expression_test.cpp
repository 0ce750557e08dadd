// Random expressions of the macro language against an evaluator that applies a list of operators in
// the order of writing.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "support/program.h"

#include "macro/variables.h"

namespace zeb_test {
namespace {

struct chain;

// A number as it is written, or a chain in parentheses, with signs before it.
struct operand {
  std::string signs;  // "!" and "-", the nearest one last
  std::string text;
  double number = 0;
  std::unique_ptr<chain> inside;
};

struct chain {
  std::vector<operand> operands;
  std::vector<std::string> operators;  // one fewer
};

constexpr double cells[] = {0, 1, 3, -2, 2.5, 1000};

class writer {
 public:
  explicit writer(unsigned seed) : random_(seed) {}

  int pick(int n) { return static_cast<int>(random_() % static_cast<unsigned>(n)); }

  chain random_chain(int depth) {
    static constexpr const char* operators[] = {
        "+", "-", "*", "/", "&", "|", "^", "==", "!=", "&&", "||", "<=", "<", ">", ">="};
    chain result;
    const int n = 1 + pick(5);
    for (int i = 0; i < n; ++i) {
      result.operands.push_back(random_operand(depth));
      if (i + 1 < n) result.operators.emplace_back(operators[pick(15)]);
    }
    return result;
  }

  // Blanks at random; a bit operator is told from a logical one by what follows it.
  std::string text(const chain& c) {
    std::string result;
    for (std::size_t i = 0; i < c.operands.size(); ++i) {
      const operand& o = c.operands[i];
      result += o.signs + (o.inside ? "(" + text(*o.inside) + ")" : o.text);
      if (i + 1 == c.operands.size()) break;
      const operand& next = c.operands[i + 1];
      const bool apart = !next.signs.empty() || next.text[0] == '{' || pick(2) == 0;
      result += (pick(2) ? " " : "") + c.operators[i] + (apart ? " " : "");
    }
    return result;
  }

 private:
  operand random_operand(int depth) {
    operand o;
    while (pick(6) == 0) o.signs += pick(2) ? '!' : '-';
    const int kind = pick(depth > 3 ? 4 : 6);
    if (kind == 0) {
      const int i = pick(6);
      o.number = cells[i];
      o.text = "'c" + std::to_string(10 + i) + "'";
    } else if (kind == 1) {
      o.number = pick(4000) / 8.0;  // written in full by three decimals
      std::ostringstream decimals;
      decimals << std::fixed << o.number;
      o.text = decimals.str();
    } else if (kind == 2) {
      const int a = pick(30);
      const int b = pick(30);
      o.number = static_cast<double>((std::uint32_t{1} << a) | (std::uint32_t{1} << b));
      o.text = "{" + std::to_string(a) + " " + std::to_string(b) + "}";
    } else if (kind == 3) {
      o.number = pick(12);
      o.text = std::to_string(static_cast<int>(o.number));
    } else {
      o.inside = std::make_unique<chain>(random_chain(depth + 1));
      o.text = "(";
    }
    return o;
  }

  std::mt19937 random_;
};

// What can't be told: a division by zero, or bits of what doesn't fit 32 of them.
enum class trouble { none, zero_divisor, too_large };

struct answer {
  double value = 0;
  trouble what = trouble::none;
};

answer value_of(const chain& c);

answer value_of(const operand& o) {
  answer a{o.number, trouble::none};
  if (o.inside) a = value_of(*o.inside);
  for (auto sign = o.signs.rbegin(); sign != o.signs.rend(); ++sign) {
    a.value = *sign == '-' ? -a.value : a.value == 0 ? 1 : 0;
  }
  return a;
}

bool fits(double v) { return std::fabs(v) < 2147483648.0; }

answer applied(const std::string& op, double a, double b) {
  if (op == "/" && b == 0) return {0, trouble::zero_divisor};
  const bool bits = op == "&" || op == "|" || op == "^";
  if (bits && !(fits(a) && fits(b))) return {0, trouble::too_large};
  const auto i = bits ? static_cast<std::int32_t>(a) : 0;
  const auto j = bits ? static_cast<std::int32_t>(b) : 0;
  const double value = op == "+"    ? a + b
                       : op == "-"  ? a - b
                       : op == "*"  ? a * b
                       : op == "/"  ? a / b
                       : op == "&"  ? double{static_cast<double>(i & j)}
                       : op == "|"  ? double{static_cast<double>(i | j)}
                       : op == "^"  ? double{static_cast<double>(i ^ j)}
                       : op == "==" ? a == b
                       : op == "!=" ? a != b
                       : op == "&&" ? a != 0 && b != 0
                       : op == "||" ? a != 0 || b != 0
                       : op == "<"  ? a < b
                       : op == "<=" ? a <= b
                       : op == ">"  ? a > b
                                    : a >= b;
  return {value, trouble::none};
}

answer value_of(const chain& c) {
  answer sum = value_of(c.operands[0]);
  for (std::size_t i = 0; i < c.operators.size() && sum.what == trouble::none; ++i) {
    // What can't change the answer isn't looked at.
    const bool decided =
        (c.operators[i] == "&&" && sum.value == 0) || (c.operators[i] == "||" && sum.value != 0);
    if (decided) {
      sum.value = sum.value != 0;
      continue;
    }
    const answer next = value_of(c.operands[i + 1]);
    if (next.what != trouble::none) return next;
    sum = applied(c.operators[i], sum.value, next.value);
  }
  return sum;
}

void start(const char* settings) {
  std::string text = std::string("macro-; ") + settings + " macro=; var = 0 result 10";
  for (int i = 10; i < 16; ++i) text += " c" + std::to_string(i);
  text += "; return =;";
  run_program(text);
  for (int i = 0; i < 6; ++i) zeb::store_variable(10 + i, cells[i]);
}

TEST(expression, runs_from_left_to_right) {
  start("macfloat =;");
  int compared = 0;
  for (unsigned seed = 1; seed <= 4000; ++seed) {
    writer source(seed);
    const chain c = source.random_chain(0);
    const std::string text = source.text(c);
    const answer expected = value_of(c);
    if (expected.what == trouble::too_large) continue;
    zeb::store_variable(0, -77);
    const std::string printed = run_program("set result = " + text + ";");
    if (expected.what == trouble::zero_divisor) {
      EXPECT_NE(printed.find("Can't divide by zero"), std::string::npos)
          << "seed " << seed << ": " << text << "\n"
          << printed;
    } else {
      EXPECT_EQ(zeb::variable_value(0), expected.value) << "seed " << seed << ": " << text << "\n"
                                                        << printed;
    }
    ++compared;
  }
  EXPECT_GT(compared, 3000);
  run_program("macro-;");
}

TEST(expression, is_truncated_when_stored_as_integer) {
  start("macfloat -;");
  for (int i = 0; i < 6; ++i) ASSERT_EQ(zeb::variable_value(10 + i), std::trunc(cells[i]));
  for (unsigned seed = 1; seed <= 1000; ++seed) {
    writer source(seed);
    const chain c = source.random_chain(3);
    const std::string text = source.text(c);
    const answer expected = value_of(c);
    if (expected.what != trouble::none || !fits(expected.value)) continue;
    if (text.find('\'') != std::string::npos) continue;  // cells hold integers here
    run_program("set result = " + text + ";");
    EXPECT_EQ(zeb::variable_value(0), std::trunc(expected.value))
        << "seed " << seed << ": " << text;
  }
  run_program("macro-; macfloat =;");
}

}  // namespace
}  // namespace zeb_test
