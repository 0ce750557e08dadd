// Bodies: texts in the heap that the reader reads again for each round of a loop or each item of a
// walk.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace zeb {

/// Commands with a body.
enum class body_kind { loop, moves, files, travtree, iterrecs, combine };

/// What the body of a walk is run for. Lives as long as the body is open; errors, jumps and ends of
/// files destroy it as they leave the body.
class body_items {
 public:
  body_items() = default;
  virtual ~body_items() = default;
  body_items(const body_items&) = delete;
  body_items& operator=(const body_items&) = delete;

  /// Makes the next item the current one: the first, when called first. False where none is left.
  virtual bool next() = 0;
  /// There are no more items, or the script has ended them.
  virtual void over() {}
  /// An error, a break or a jump leaves the body.
  virtual void broken_off() {}
  /// For the place of an error: "travtree (node 7)".
  virtual std::string place() const = 0;

  /// The script wants no further items.
  void end() { ended_ = true; }
  bool ended() const { return ended_; }

 private:
  bool ended_ = false;
};

/// How a text writes `else if`.
enum class else_style { unknown, nested, chained };

/// One open body.
struct body_record {
  body_kind kind = body_kind::loop;
  char* saved_top = nullptr;       // heap top before its text and name
  const char* text = nullptr;      // in the heap, with a NUL at its end
  const char* text_end = nullptr;  // its NUL
  const char* resume = nullptr;    // where the outer text goes on
  else_style style = else_style::unknown;
  // Of counted loops.
  const char* name = nullptr;  // in the heap
  std::int64_t current = 0;    // the counter; never negative while the body runs
  std::int64_t step = 0;
  std::int64_t end = 0;
  // Of walks.
  std::unique_ptr<body_items> items;
};

}  // namespace zeb
