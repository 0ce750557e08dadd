#include "base/errors.h"

#include <cstdarg>
#include <cstring>
#include <new>
#include <stdexcept>

#include "base/command.h"
#include "base/hooks.h"
#include "base/memory_reserve.h"
#include "base/message_place.h"
#include "base/message_text.h"
#include "base/process.h"

namespace zeb {
namespace {

constexpr std::size_t longest_message = 2046;

// All the parts, each followed by a blank; a part that no longer fits is left out.
std::string joined(std::span<const message_part> parts) {
  std::string text;
  for (const message_part& part : parts) {
    if (text.size() + part.text().size() + 1 > longest_message) continue;
    text += part.text();
    text += ' ';
  }
  return text;
}

[[noreturn]] void refuse_for_memory() {
  note_memory_refused();
  error_end("Not enough memory for", command.command_name);
}

}  // namespace

void raise_error(std::span<const message_part> parts) {
  const memory_reserve_scope reserve;
  std::string text = joined(parts);
  if (message_place.text) text += message_place.text() + " ";
  if (hooks_of_base.tell_error) hooks_of_base.tell_error(text);
  throw_to_jump_context();
}

void error_end_f(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const std::string text = formatted_text(format, arguments);
  va_end(arguments);
  error_end(text);
}

void raise_standard_error() {
  const memory_reserve_scope reserve;
  try {
    throw;
  } catch (const std::bad_alloc&) {
    refuse_for_memory();
  } catch (const std::length_error&) {
    refuse_for_memory();
  } catch (const std::exception& failure) {
    error_end("Internal error:", failure.what());
  }
}

void run_in_jump_context(void (*task)()) {
  const jump_context context;
  try {
    task();
  } catch (const command_unwinding&) {
  } catch (const std::exception&) {
    run_in_jump_context(raise_standard_error);
  }
}

void raise_warning(std::span<const message_part> parts) {
  if (hooks_of_base.tell_warning) hooks_of_base.tell_warning(joined(parts));
}

void warning_f(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const std::string text = formatted_text(format, arguments);
  va_end(arguments);
  warning(text);
}

void internal_error(const char* what, const char* file, int line) {
  const char* name = std::strrchr(file, '/');
  error_end("Internal error:", what, text_of("(%s, line %i)", name ? name + 1 : file, line));
}

}  // namespace zeb
