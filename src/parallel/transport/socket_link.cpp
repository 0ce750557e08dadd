#include "parallel/transport/socket_link.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>

namespace zeb {
namespace {

struct message_head {
  std::int32_t tag = 0;
  std::int32_t task = 0;
  std::uint64_t length = 0;
};
constexpr std::uint64_t longest_message = std::uint64_t{1} << 40;

}  // namespace

socket_link::~socket_link() {
  if (is_open()) shut();
}

void socket_link::shut() {
  close(descriptor_);
  descriptor_ = -1;
}

void socket_link::take_in() {
  constexpr std::size_t piece = 1 << 16;
  while (is_open()) {
    const std::size_t end = bytes_.size();
    bytes_.resize(end + piece);
    const ssize_t count = recv(descriptor_, bytes_.data() + end, piece, MSG_DONTWAIT);
    bytes_.resize(end + static_cast<std::size_t>(count > 0 ? count : 0));
    if (count > 0) continue;
    if (count < 0 && errno == EINTR) continue;
    if (count == 0 || (errno != EAGAIN && errno != EWOULDBLOCK)) shut();
    break;
  }
  split();
}

void socket_link::split() {
  std::size_t at = 0;
  message_head head;
  while (bytes_.size() - at >= sizeof head) {
    std::memcpy(&head, bytes_.data() + at, sizeof head);
    if (head.length > longest_message) {
      if (is_open()) shut();
      break;
    }
    const std::size_t length = head.length;
    if (bytes_.size() - at - sizeof head < length) break;
    const auto body = bytes_.begin() + static_cast<std::ptrdiff_t>(at + sizeof head);
    inbox_.push_back({head.task, head.tag, {body, body + static_cast<std::ptrdiff_t>(length)}});
    at += sizeof head + length;
  }
  bytes_.erase(bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>(at));
}

bool socket_link::put_out(std::span<const std::byte> bytes,
                          const std::function<bool(double)>& may_wait) {
  double waited = 0;  // seconds
  while (!bytes.empty() && is_open()) {
    const ssize_t count =
        ::send(descriptor_, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    if (count > 0) {
      bytes = bytes.subspan(static_cast<std::size_t>(count));
      waited = 0;
      continue;
    }
    if (errno == EINTR) continue;
    if (errno != EAGAIN && errno != EWOULDBLOCK) {
      shut();
      break;
    }
    // The other end may be waiting for room in the same way: what it sends is taken.
    pollfd waiting{descriptor_, POLLIN | POLLOUT, 0};
    constexpr int milliseconds = 1000;
    const int ready = poll(&waiting, 1, milliseconds);
    if ((waiting.revents & POLLIN) != 0) take_in();
    if (ready == 0 && !may_wait(++waited) && is_open()) shut();
  }
  return bytes.empty();
}

bool socket_link::send(task_id task, int tag, std::span<const std::byte> body,
                       const std::function<bool(double)>& may_wait) {
  const message_head head{tag, task, body.size()};
  return put_out(std::as_bytes(std::span(&head, 1)), may_wait) && put_out(body, may_wait);
}

std::optional<arrived_message> socket_link::next(task_id task, int tag) {
  const auto found = std::ranges::find_if(inbox_, [task, tag](const arrived_message& m) {
    return (task == any_task || m.from == task) && (tag == any_tag || m.tag == tag);
  });
  if (found == inbox_.end()) return std::nullopt;
  std::optional<arrived_message> message = std::move(*found);
  inbox_.erase(found);
  return message;
}

bool make_pair(socket_pair& pair) {
  return socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pair.data()) == 0;
}

}  // namespace zeb
