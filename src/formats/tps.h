// TPS files as data: each file is one configuration, which is one character; specimens are taxa.
#pragma once

#include <functional>
#include <span>
#include <string>

#include "base/input_file.h"
#include "base/output_file.h"
#include "formats/written_words.h"

namespace zeb {

/// Makes a matrix of the files' configurations, whose taxa are those of all files; with `add` they
/// become further characters of the data in memory.
void read_tps_files(std::span<const std::string> names, bool add);
/// The same for one file that is open.
void read_tps_file(input_file& file);

/// Writes each configuration to a file of its own, which `open` opens: `name`, or "name_C.tps" of
/// "name.tps" where the matrix has several. Returns their number.
int write_tps_files(const std::string& name, const word_writer& words,
                    const std::function<void(output_file&, const std::string&)>& open);

}  // namespace zeb
