#include "engine/passes/undo.h"

#include <cstring>

#include "base/errors.h"
#include "base/indices.h"

namespace zeb {
namespace {

template <int words>
void put_back(const undo_log& log, int from) {
  for (int i = log.count - 1; i >= from; --i)
    std::memcpy(log.where[i], log.old_words + at(i) * words, words * sizeof(word));
}

}  // namespace

void begin_undo(search_data& data) {
  data.undo.count = 0;
  data.undo.recording = data.undo.capacity > 0;
}

bool undo_back_to(search_data& data, int count) {
  undo_log& log = data.undo;
  if (!log.recording || log.count > log.capacity) return false;
  switch (log.piece_words) {
    case 1:
      put_back<1>(log, count);
      break;
    case 2:
      put_back<2>(log, count);
      break;
    case 8:
      put_back<8>(log, count);
      break;
    default:
      ALWAYS_CHECK(log.piece_words == 16, "width of the undo log");
      put_back<16>(log, count);
  }
  log.count = count;
  return true;
}

void forget_notes(search_data& data, int count) { data.undo.count = count; }

bool undo_sets(search_data& data) {
  const bool whole = undo_back_to(data, 0);
  forget_notes(data, 0);
  return whole;
}

void end_undo(search_data& data) {
  data.undo.count = 0;
  data.undo.recording = false;
}

void note_words(search_data& data, word* p, int count) {
  undo_log& log = data.undo;
  if (!log.recording) return;
  for (int w = 0; w < count; w += log.piece_words) {
    if (log.count >= log.capacity) {
      log.count = log.capacity + 1;
      return;
    }
    log.where[log.count] = p + w;
    std::memcpy(log.old_words + at(log.count) * at(log.piece_words), p + w,
                at(log.piece_words) * sizeof(word));
    ++log.count;
  }
}

}  // namespace zeb
