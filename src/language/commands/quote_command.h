// `lquote`: how `quote` prints its text.
#pragma once

namespace zeb {

struct quote_settings {
  bool literal = false;      // `lquote =`: no newline is added at the end
  bool conversions = false;  // `lquote [`: "&N" is the character of code N
  bool to_stderr = false;    // `lquote >`: also to the standard error, even in the background
};
extern quote_settings quotes;  // written by `lquote`

}  // namespace zeb
