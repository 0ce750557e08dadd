#include "base/files_read.h"

#include <sha2.h>
#include <unistd.h>

#include <array>

namespace zeb {

files_read_state files_read;

namespace {

constexpr std::size_t piece_size = 65536;

bool same_file(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino && a.st_size == b.st_size &&
         a.st_mtim.tv_sec == b.st_mtim.tv_sec && a.st_mtim.tv_nsec == b.st_mtim.tv_nsec;
}

// Empty where the file can't be read to its end.
std::string digest_of(int descriptor, std::int64_t size) {
  SHA2_CTX state;
  SHA256Init(&state);
  std::array<std::uint8_t, piece_size> piece;
  std::int64_t at = 0;
  while (at < size) {
    const ssize_t n = pread(descriptor, piece.data(), piece.size(), at);
    if (n <= 0) return {};
    SHA256Update(&state, piece.data(), static_cast<std::size_t>(n));
    at += n;
  }
  std::array<char, SHA256_DIGEST_STRING_LENGTH> digits{};
  SHA256End(&state, digits.data());
  return digits.data();
}

}  // namespace

void note_file_read(const std::string& name, int descriptor, const struct stat& status) {
  const auto [place, is_new] = files_read.number_of.try_emplace(name, files_read.files.size());
  if (is_new) files_read.files.emplace_back().name = name;
  file_read* const file = &files_read.files[place->second];
  if (!is_new) {
    if (same_file(file->status, status)) return;
    ++file->versions;
  }
  file->status = status;
  file->bytes = S_ISREG(status.st_mode) ? status.st_size : -1;
  file->digest = file->bytes < 0 ? std::string() : digest_of(descriptor, status.st_size);
}

}  // namespace zeb
