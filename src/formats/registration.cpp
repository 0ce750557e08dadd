#include "formats/registration.h"

#include "formats/fasta.h"
#include "formats/newick.h"
#include "formats/nexus/file_reader.h"
#include "formats/phylip.h"
#include "language/format_hooks.h"

namespace zeb {

void register_formats() {
  format_hooks.read_nexus = read_nexus;
  format_hooks.read_fasta = read_fasta_file;
  format_hooks.read_newick = read_newick_file;
  format_hooks.read_phylip = read_phylip_file;
}

}  // namespace zeb
