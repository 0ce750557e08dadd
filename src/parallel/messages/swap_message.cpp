#include "parallel/messages/swap_message.h"

namespace zeb {

packet_writer swap_message::packed() const {
  packet_writer to;
  to.put(static_cast<std::int32_t>(word));
  to.put(version);
  to.put(share);
  to.put(shares);
  to.put_real(score);
  to.put_text(host);
  to.put(process);
  to.put_list(tree);
  return to;
}

swap_message swap_message::unpacked(packet_reader from) {
  constexpr std::int32_t most_shares = 1 << 20;
  swap_message m;
  m.word = static_cast<swap_word>(from.whole_within(0, static_cast<int>(swap_word::over)));
  m.version = from.whole();
  m.share = from.whole_within(0, most_shares);
  m.shares = from.whole_within(1, most_shares);
  if (m.share >= m.shares) throw damaged_message();
  m.score = from.real();
  m.host = from.text();
  m.process = from.whole();
  m.tree = from.list();
  if (!from.at_end()) throw damaged_message();
  return m;
}

}  // namespace zeb
