// The store of the macro language: numbered variables, their names and dimensions, and the heap
// that holds names and the texts of bodies, one after the other. These lie in one piece of memory,
// which lives while the language is on; what is known of open bodies stands beside it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/random.h"
#include "macro/body_record.h"

namespace zeb {

constexpr int most_dimensions = 5;
constexpr int longest_variable_name = 50;
constexpr int longest_loop_name = 80;

/// What belongs to one open input and ends with it.
struct macro_frame {
  int shift = 0;            // var shift of the file
  int private_count = 0;    // `private N`
  int bodies_at_entry = 0;  // bodies that were open when the file was entered
  int named_count = 0;      // names that existed at entry
  char* heap_top = nullptr;
  bool keep_names = false;  // `return =`
  else_style style = else_style::unknown;
  std::string pending_text;  // expansion that was being read when the file was called
};

struct macro_state {
  // Settings that survive `macro -`.
  int protection = 2;  // 0 to 2
  int max_variables = 1000;
  int max_loops = 15;
  std::int64_t memory_bytes = 102400;  // `macro [N`
  bool integer_only = false;           // `macfloat -`
  std::string number_format = "%f";    // for non-integral values, at most 15 bytes
  int digits = 6;
  bool names_as_numbers = false;     // `macro +`
  bool blank_after_strings = false;  // `set +`
  bool report = false;               // `macreport =`
  int seed = 1;                      // `macseed`
  random_generator generator{1};
  std::string goto_default_file;              // `goto =`
  double clock_start = 0;                     // `resettime`
  int exit_status = 0;                        // `return N`
  double regr = 0, regalfa = 0, regbeta = 0;  // results of regressions

  // While the language is on.
  std::byte* memory = nullptr;
  std::size_t memory_size = 0;
  char* heap_bottom = nullptr;
  char* heap_top = nullptr;
  char* heap_end = nullptr;  // 16 bytes before the end of the memory
  std::int8_t* dimension_count =
      nullptr;                      // by variable, dimensions below this point; protection only
  int** dimension_sizes = nullptr;  // by variable: its sizes
  int* size_tables = nullptr;       // most_dimensions ints a variable
  int* named = nullptr;             // named variables, sorted by number
  int named_count = 0;
  std::vector<body_record> bodies;     // that are open, one within the other
  unsigned rounds = 0;                 // of all bodies
  std::int32_t* int_values = nullptr;  // one of the two
  double* real_values = nullptr;
  char** names = nullptr;  // by variable; null unnamed

  std::vector<macro_frame> frames{1};  // by input depth; the last is the current file's

  int table_array = -1;  // array that takes the values of printed tables; -1 none, `maketable +`
};
extern macro_state macros;

/// What `exstatus` tells.
void set_exit_status(int status);

/// Takes and gives back the memory with all tables; both leave the language without names and
/// loops.
void allocate_macro_tables();
void free_macro_tables();
/// "Macros: 1.2 Kb in use, 100.0 Kb free\n" without its newline.
std::string macro_memory_text();
std::size_t macro_memory_used();

/// Takes bytes from the heap, or ends the command where it is full.
char* take_heap(std::size_t bytes);
void release_heap(char* to);

/// The array that takes the values of printed tables; -1 for none.
void set_table_array(int number);

/// What walks tell the expression functions about the item they are at:
/// values of the last walk; 0 before the first one.
struct walk_results {
  double percent_swapped = 0;  // of the enumeration of trees
  bool tree_complete = false;  // `bandb`: the tree holds all taxa
  int taxon_added = 0;         // `bandb`: the one added last
  double steps = 0;            // of the current reconstruction
  std::string file;            // of `forfiles`
  bool is_directory = false;
};
extern walk_results walked;

void tell_percent_swapped(double percent);
void tell_growing_tree(bool complete, int taxon_added);
void tell_reconstruction_steps(double steps);
void tell_file(std::string name, bool is_directory) noexcept;

}  // namespace zeb
