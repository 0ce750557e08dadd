// The options for the order in which taxa are added, of the commands that build trees.
#pragma once

#include <string>

#include "language/options.h"
#include "search/search_settings.h"

namespace zeb {

// Rows of option tables; `addition` leads to the member of the command's settings.
template <auto... addition>
constexpr auto ras_option() {
  return choice<addition..., &addition_settings::informative>("ras", 0)
      .template also<addition..., &addition_settings::look>(0)
      .template also<addition..., &addition_settings::rule>(0)
      .help("taxa are added in random order");
}
template <int value, auto... addition>
constexpr auto look_ahead_option(const char* keyword) {
  return optional_number<addition..., &addition_settings::look>(keyword, all_taxa, any_integer)
      .template also<addition..., &addition_settings::informative>(0)
      .template also<addition..., &addition_settings::rule>(value);
}
template <auto... addition>
constexpr auto cas_option() {
  return look_ahead_option<1, addition...>("cas").help(
      "closest taxon first, looking at the next N, or at all");
}
template <auto... addition>
constexpr auto fas_option() {
  return look_ahead_option<2, addition...>("fas").help(
      "furthest taxon first, looking at the next N, or at all");
}
template <auto... addition>
constexpr auto sas_option() {
  return look_ahead_option<0, addition...>("sas").help(
      "taxon with the greatest difference between its best and worst place first");
}
template <auto... addition>
constexpr auto ias_option() {
  return optional_number<addition..., &addition_settings::informative>("ias", all_taxa, any_integer)
      .template also<addition..., &addition_settings::look>(0)
      .template also<addition..., &addition_settings::rule>(0)
      .help("taxon that makes the most characters informative first");
}

/// Numbers of taxa below 0 stand for all.
void settle_additions(addition_settings& wanted);
/// The order in words, for listings.
std::string addition_text(const addition_settings& additions);

}  // namespace zeb
