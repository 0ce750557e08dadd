#include "search/landmarks/estimate_errors.h"

#include <algorithm>
#include <cmath>

#include "base/message_text.h"
#include "landmarks/search_settings.h"

namespace zeb {

void estimate_errors::add(double error) {
  least = cases > 0 ? std::min(least, error) : error;
  most = cases > 0 ? std::max(most, error) : error;
  ++cases;
  sum += error;
  sum_of_squares += error * error;
}

void estimate_errors::add(const estimate_errors& other) {
  if (other.cases == 0) return;
  least = cases > 0 ? std::min(least, other.least) : other.least;
  most = cases > 0 ? std::max(most, other.most) : other.most;
  cases += other.cases;
  sum += other.sum;
  sum_of_squares += other.sum_of_squares;
}

double estimate_errors::deviation() const {
  if (cases < 2) return 0;
  const auto n = static_cast<double>(cases);
  return std::sqrt(std::max(0.0, (sum_of_squares - sum * sum / n) / (n - 1)));
}

std::string approximation_in_words(const estimate_errors& errors) {
  std::string text = error_margin_in_words(landmark_searching.margin) + "\n";
  if (errors.cases > 0)
    text += text_of("Observed error: mean %.2f, s.d. %.2f, %.2f to %.2f (%lld cases)\n",
                    100 * errors.mean(), 100 * errors.deviation(), 100 * errors.least,
                    100 * errors.most, static_cast<long long>(errors.cases));
  return text;
}

}  // namespace zeb
