#include "base/packet.h"

#include <limits>

#include "base/errors.h"

namespace zeb {

void packet_writer::put_text(std::string_view text) {
  ALWAYS_CHECK(text.size() <= std::numeric_limits<std::int32_t>::max(), "text too long to send");
  put(static_cast<std::int32_t>(text.size()));
  const auto* const first = reinterpret_cast<const std::byte*>(text.data());
  bytes_.insert(bytes_.end(), first, first + text.size());
}

void packet_writer::put_list(std::span<const std::int32_t> values) {
  put(static_cast<std::int32_t>(values.size()));
  const std::span<const std::byte> all = std::as_bytes(values);
  bytes_.insert(bytes_.end(), all.begin(), all.end());
}

std::span<const std::byte> packet_reader::take_bytes(std::size_t count) {
  if (count > bytes_.size()) throw damaged_message();
  const std::span<const std::byte> taken = bytes_.first(count);
  bytes_ = bytes_.subspan(count);
  return taken;
}

std::int32_t packet_reader::whole_within(std::int32_t lowest, std::int32_t highest) {
  const std::int32_t value = whole();
  if (value < lowest || value > highest) throw damaged_message();
  return value;
}

// Compared before memory is taken for it.
std::size_t packet_reader::length(std::size_t item_size) {
  const std::int32_t count = whole();
  if (count < 0 || static_cast<std::size_t>(count) > bytes_.size() / item_size)
    throw damaged_message();
  return static_cast<std::size_t>(count);
}

std::string packet_reader::text() {
  const std::span<const std::byte> all = take_bytes(length(1));
  return {reinterpret_cast<const char*>(all.data()), all.size()};
}

std::vector<std::int32_t> packet_reader::list() {
  std::vector<std::int32_t> values(length(sizeof(std::int32_t)));
  const std::span<const std::byte> all = take_bytes(values.size() * sizeof(std::int32_t));
  if (!all.empty()) std::memcpy(values.data(), all.data(), all.size());
  return values;
}

}  // namespace zeb
