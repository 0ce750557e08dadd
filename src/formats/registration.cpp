#include "formats/registration.h"

#include "formats/fasta.h"
#include "formats/file_kinds.h"
#include "formats/newick.h"
#include "formats/nexus/file_reader.h"
#include "formats/phylip.h"
#include "formats/tps.h"
#include "language/hooks.h"

namespace zeb {

void register_formats() {
  hooks_of_language.read_nexus = read_nexus;
  hooks_of_language.read_fasta = read_fasta_file;
  hooks_of_language.read_newick = read_newick_file;
  hooks_of_language.read_phylip = read_phylip_file;
  hooks_of_language.read_tps = read_tps_files;
  hooks_of_language.read_known_format = read_known_format;
}

}  // namespace zeb
