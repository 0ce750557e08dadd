// The values of a message between processes, one after the other, in the order in which they were
// put. Both ends are the same program.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace zeb {

class packet_writer {
 public:
  void put(std::int32_t value) { put_raw(value); }
  void put_long(std::uint64_t value) { put_raw(value); }
  void put_real(double value) { put_raw(value); }
  void put_byte(std::uint8_t value) { put_raw(value); }
  /// Its length first.
  void put_text(std::string_view text);
  /// Their number first.
  void put_list(std::span<const std::int32_t> values);
  std::span<const std::byte> bytes() const { return bytes_; }

 private:
  template <class type>
  void put_raw(const type& value) {
    static_assert(std::is_trivially_copyable_v<type>);
    const std::size_t end = bytes_.size();
    bytes_.resize(end + sizeof value);
    std::memcpy(bytes_.data() + end, &value, sizeof value);
  }

  std::vector<std::byte> bytes_;
};

/// Thrown where a message is shorter than what it should hold, or holds what can't be.
struct damaged_message {};

class packet_reader {
 public:
  explicit packet_reader(std::span<const std::byte> bytes) : bytes_(bytes) {}

  std::int32_t whole() { return take<std::int32_t>(); }
  /// A whole number that must lie in `lowest` to `highest`.
  std::int32_t whole_within(std::int32_t lowest, std::int32_t highest);
  std::uint64_t long_whole() { return take<std::uint64_t>(); }
  double real() { return take<double>(); }
  std::uint8_t byte() { return take<std::uint8_t>(); }
  std::string text();
  std::vector<std::int32_t> list();
  bool at_end() const { return bytes_.empty(); }
  /// What hasn't been read.
  std::span<const std::byte> rest() const { return bytes_; }

 private:
  template <class type>
  type take() {
    type value;
    std::memcpy(&value, take_bytes(sizeof value).data(), sizeof value);
    return value;
  }
  std::span<const std::byte> take_bytes(std::size_t count);
  std::size_t length(std::size_t item_size);

  std::span<const std::byte> bytes_;
};

}  // namespace zeb
