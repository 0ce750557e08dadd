// Any bytes read as a message between processes are refused, or pack into bytes that give the same
// message again.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

#include "parallel/messages/contents.h"
#include "parallel/messages/swap_message.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

template <class message>
void read_and_pack(std::span<const std::byte> bytes) {
  try {
    const zeb::packet_writer once = message::unpacked(zeb::packet_reader(bytes)).packed();
    const zeb::packet_writer again = message::unpacked(zeb::packet_reader(once.bytes())).packed();
    if (!std::ranges::equal(once.bytes(), again.bytes())) std::abort();
  } catch (const zeb::damaged_message&) {
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1) return 0;
  const std::span<const std::byte> bytes = std::as_bytes(std::span(data + 1, size - 1));
  switch (data[0] % 5) {
    case 0:
      read_and_pack<zeb::task_orders>(bytes);
      break;
    case 1:
      read_and_pack<zeb::task_packet>(bytes);
      break;
    case 2:
      read_and_pack<zeb::task_status>(bytes);
      break;
    case 3:
      read_and_pack<zeb::task_result>(bytes);
      break;
    default:
      read_and_pack<zeb::swap_message>(bytes);
  }
  return 0;
}
