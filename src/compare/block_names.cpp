#include "compare/block_names.h"

#include "base/message_text.h"

namespace zeb {
namespace {

std::string block_name(const block_origin& origin, const data_set& main) {
  const data_set& from = *origin.from;
  const bool named =
      at(origin.block) < from.block_names.size() && !from.block_names[at(origin.block)].empty();
  const std::string name = named ? from.block_names[at(origin.block)] : std::string();
  if (named && &from == &main) return name;
  if (named) return name + "_(" + from.word + ")";
  if (origin.type == continuous_data) return "cont_" + from.word;
  return text_of("block_%i_(%s)", origin.block, from.word.c_str());
}

}  // namespace

block_origin origin_of(const data_set& data, int character) {
  const character_record& record = data.characters[at(character)].settings;
  return {&data, record.block, record.type};
}

void make_blocks(data_set& data, std::span<const block_origin> origins, const data_set& main) {
  data.block_names = {"all"};
  for (std::size_t c = 0; c < origins.size(); ++c) {
    if (c == 0 || origins[c] != origins[c - 1])
      data.block_names.push_back(block_name(origins[c], main));
    data.characters[c].settings.block = static_cast<int>(data.block_names.size()) - 1;
  }
}

}  // namespace zeb
