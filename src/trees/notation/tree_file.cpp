#include "trees/notation/tree_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "base/errors.h"
#include "base/indices.h"
#include "base/process.h"
#include "matrix/matrix.h"
#include "trees/drawing/tags.h"
#include "trees/notation/compact_format.h"
#include "trees/notation/parenthetical_writer.h"
#include "trees/tree_store.h"

namespace zeb {

tree_file_state tree_file;

namespace {

[[noreturn]] void not_writable() { error_end("Cannot write to tree file", tree_file.name); }

void put(std::span<const std::uint8_t> bytes) {
  if (std::fwrite(bytes.data(), 1, bytes.size(), tree_file.stream) != bytes.size()) not_writable();
}

void put(const std::string& text) {
  if (std::fwrite(text.data(), 1, text.size(), tree_file.stream) != text.size()) not_writable();
}

[[noreturn]] void cannot_append(const std::string& name, const char* why) {
  error_end("Cannot append tree file.\nTree file", name, why);
}

/// The file's trees must be for as many taxa, and whole.
void check_appendable(const std::string& name, std::FILE* file) {
  std::uint8_t head[6] = {};
  const std::size_t got = std::fread(head, 1, sizeof head, file);
  const compact_head_fields fields = read_compact_head({head, got});
  if (fields.ntax < 0) cannot_append(name, "isn't a compact tree file");
  if (fields.ntax != matrix.ntax) {
    error_end("Cannot append tree file.\n\nTrees in", name, "are for", fields.ntax,
              "taxa; current data set has", matrix.ntax, "taxa");
  }
  const std::size_t word = compact_head(matrix.ntax).size() == 2 ? 2 : 4;
  std::fseek(file, 0, SEEK_END);
  const long end = std::ftell(file);
  auto place = static_cast<long>(fields.bytes);
  while (place < end) {
    std::uint8_t count[4] = {};
    std::fseek(file, place, SEEK_SET);
    if (std::fread(count, 1, word, file) != word) cannot_append(name, "ends early");
    const std::uint64_t words = count[0] | std::uint64_t{count[1]} << 8 |
                                std::uint64_t{count[2]} << 16 | std::uint64_t{count[3]} << 24;
    place += static_cast<long>(word + words * word);
  }
  if (place != end) cannot_append(name, "ends early");
}

/// Closes the stream when the opening fails on the way.
struct stream_guard {
  std::FILE* stream;
  ~stream_guard() {
    if (stream) std::fclose(stream);
  }
  std::FILE* release() {
    std::FILE* kept = stream;
    stream = nullptr;
    return kept;
  }
};

std::FILE* open_compact(const std::string& name) {
  stream_guard file{std::fopen(name.c_str(), "r+b")};
  bool is_new = false;
  if (file.stream) {
    std::fseek(file.stream, 0, SEEK_END);
    is_new = std::ftell(file.stream) == 0;
    std::rewind(file.stream);
    if (!is_new) check_appendable(name, file.stream);
    std::fseek(file.stream, 0, SEEK_END);
  } else if (errno == ENOENT) {
    file.stream = std::fopen(name.c_str(), "wb");
    is_new = true;
  }
  if (!file.stream) error_end("Cannot open file", name);
  if (is_new) {
    const std::vector<std::uint8_t> head = compact_head(matrix.ntax);
    std::fwrite(head.data(), 1, head.size(), file.stream);
  }
  return file.release();
}

/// "tread" with its title, whose quote must end where it should.
std::string opening_text() {
  std::string data_file = matrix.file_name;
  std::replace(data_file.begin(), data_file.end(), '\'', '"');
  return "tread 'tree(s) from ZEB, for data in " + data_file + "'\n";
}

/// A tree as text with active taxa only, numbered among themselves.
std::string active_tree_text(const_tree_span tree) {
  std::vector<tree_node> record(tree.begin(), tree.end());
  std::vector<std::uint8_t> inactive(at(matrix.ntax));
  std::vector<int> number(at(matrix.ntax));
  int next = 0;
  for (int t = 0; t < matrix.ntax; ++t) {
    inactive[at(t)] = !matrix.taxon_active[at(t)];
    number[at(t)] = inactive[at(t)] ? -1 : next++;
  }
  delete_taxa(record, matrix.ntax, inactive);
  return parenthetical_text(record, matrix.ntax,
                            [&](int t) { return std::to_string(number[at(t)]); });
}

void put_parenthetical(const std::string& text) {
  if (tree_file.saved > 0) put("*\n");
  put(text);
  ++tree_file.saved;
}

void save_compact(std::span<const std::uint8_t> chosen) {
  bool warned = false;
  std::vector<std::uint8_t> bytes;
  for (int t = 0; t < store.ntrees; ++t) {
    if (!chosen[at(t)]) continue;
    bytes.clear();
    const tree_span tree = stored_tree(t);
    if (terminals_in(tree, matrix.ntax) == matrix.ntax) {
      append_compact_tree(tree, matrix.ntax, bytes);
    } else {
      if (!warned) {
        warning(
            "Some trees are incomplete\nCan't save incomplete trees as compact\n\nAbsent taxa will "
            "be joined to base and saved");
        warned = true;
      }
      std::vector<tree_node> complete(tree.begin(), tree.end());
      include_absent_taxa(complete, matrix.ntax);
      append_compact_tree(complete, matrix.ntax, bytes);
    }
    put(bytes);
    ++tree_file.saved;
  }
}

}  // namespace

void abandon_tree_file() {
  if (!tree_file.stream) return;
  if (tree_file.parenthetical) std::fputs(";\nproc/;\n", tree_file.stream);
  std::fclose(tree_file.stream);
  tree_file.stream = nullptr;
}

void open_tree_file(const std::string& name, bool parenthetical) {
  // The former file stays open if the new one can't be had; the same file must be closed first.
  if (name == tree_file.name) close_tree_file();
  std::FILE* stream = parenthetical ? std::fopen(name.c_str(), "wb") : open_compact(name);
  if (!stream) error_end("Cannot open file", name);
  close_tree_file();
  tree_file = {stream, name, parenthetical, 0};
  if (parenthetical) put(opening_text());
}

void close_tree_file(const char* closing) {
  if (!tree_file.stream) return;
  std::FILE* stream = tree_file.stream;
  bool good = !tree_file.parenthetical || std::fputs(closing, stream) >= 0;
  good = std::ferror(stream) == 0 && good;
  tree_file.stream = nullptr;
  good = std::fclose(stream) == 0 && good;
  if (!good) not_writable();
}

void save_trees(std::span<const std::uint8_t> chosen, tree_writing how) {
  if (!tree_file.parenthetical) {
    if (how.active_only) error_end("Can't save trees for active taxa in compact mode");
    save_compact(chosen);
  } else {
    for (int t = 0; t < store.ntrees; ++t) {
      if (!chosen[at(t)]) continue;
      const const_tree_span tree = stored_tree(t);
      put_parenthetical(how.active_only ? active_tree_text(tree) : stored_tree_text(tree));
    }
  }
  if (std::fflush(tree_file.stream) != 0) not_writable();
}

void save_tags() {
  if (!tree_file.parenthetical) {
    error_end("Tree-tags can be saved only in parenthetical notation");
  }
  if (!tags.tags_present) error_end("No tags to save");
  put_parenthetical(tag_tree_text());
  if (std::fflush(tree_file.stream) != 0) not_writable();
}

}  // namespace zeb
