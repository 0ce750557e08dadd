// A matrix of taxa in the arena and a text as command input, for tests below the commands.
#pragma once

#include <string>
#include <utility>

#include "base/arena.h"
#include "console/output.h"
#include "language/input.h"
#include "matrix/matrix.h"
#include "matrix/matrix_layout.h"
#include "program.h"

namespace zeb_test {

/// Arena and matrix of `ntax` taxa named T0, T1..., which go with the object, and the typed text.
/// One at a time.
class text_session {
 public:
  explicit text_session(int ntax) {
    start_program();
    zeb::output.output_mask = 7;
    zeb::create_arena(64'000'000 + static_cast<std::size_t>(ntax) * 2000);
    zeb::begin_matrix(ntax, 1);
    for (int t = 0; t < ntax; ++t) zeb::set_taxon_name(t, "T" + std::to_string(t));
    zeb::finish_matrix();
    zeb::char_source.read = next_typed;
    zeb::char_source.unread = untype;
  }
  ~text_session() {
    zeb::wipe_matrix();
    zeb::create_arena(16'000'000);
    zeb::char_source.read = zeb::plain_read_char;
    zeb::char_source.unread = zeb::plain_unread_char;
    zeb::output.output_mask = 0;
  }
  text_session(const text_session&) = delete;
  text_session& operator=(const text_session&) = delete;

  /// What `read_char` gives from now on; after it come "\n;" over and over.
  void type(std::string text) {
    text_ = std::move(text);
    next_ = 0;
  }

 private:
  static int next_typed() {
    const std::size_t i = next_++;
    if (i < text_.size()) return static_cast<unsigned char>(text_[i]);
    return (i - text_.size()) % 2 == 0 ? '\n' : ';';
  }
  static void untype() { --next_; }

  inline static std::string text_;
  inline static std::size_t next_ = 0;
};

}  // namespace zeb_test
