// The text of TPS files, which hold the landmarks of one configuration: for each specimen "LM=N"
// ("LM3=N" in three dimensions), a point a line, and "ID=name".
#pragma once

#include <string>
#include <vector>

#include "base/input_file.h"
#include "base/output_file.h"
#include "formats/written_words.h"
#include "matrix/landmarks.h"

namespace zeb {

struct tps_specimen {
  std::string name;  // ID, else the name of the image, else "Specimen_N"
  std::size_t line = 0;
  std::vector<landmark_point> points;
};
struct tps_configuration {
  std::string name;  // of the file, without folders and extension
  int dimensions = 2;
  std::vector<tps_specimen> specimens;  // all with as many points; at least one
};
/// Points of curves and outlines are landmarks after the others; coordinates are multiplied by
/// "SCALE=". Errors for anything that isn't a file of one configuration.
tps_configuration read_tps_configuration(input_file& file);

/// All taxa, those that lack the configuration with all points missing.
void write_tps(output_file& out, const landmark_configuration& configuration,
               const word_writer& words);

}  // namespace zeb
