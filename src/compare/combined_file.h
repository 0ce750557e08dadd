// The file with the combined matrix.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/output_file.h"
#include "compare/data_set.h"

namespace zeb {

/// Trees that stand together, with the name of their group.
struct tree_section {
  std::string title;
  std::string group;
  int first = 0;
  int count = 0;
};
/// Elements that go into groups "Unique_to_...".
struct unique_group {
  std::string name;
  std::vector<std::uint8_t> taxa;  // a byte each
  std::vector<std::uint8_t> characters;
};

/// Opens the file, with a warning where it is there already. Error: it can't be written.
void open_combined_file(output_file& file, const std::string& name);
/// Makes the data those in memory and writes them, with their trees and groups. The file takes its
/// name once it is whole. Error: it couldn't be written.
void write_combined_file(output_file& file, const data_set& data,
                         const std::vector<tree_section>& trees,
                         const std::vector<unique_group>& groups);

}  // namespace zeb
