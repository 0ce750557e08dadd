#include "engine/packing/packing_request.h"

#include "base/indices.h"
#include "engine/fit/weighting_settings.h"
#include "engine/search_data.h"
#include "engine/settings.h"
#include "matrix/matrix.h"

namespace zeb {

packing_request request_of_settings() {
  packing_request request;
  request.taxa.push_back(matrix.outgroup);
  for (int t = 0; t < matrix.ntax; ++t)
    if (t != matrix.outgroup && matrix.taxon_active[at(t)]) request.taxa.push_back(t);
  for (const character_record& c : matrix.characters)
    request.weights.push_back(c.active ? c.weight : 0);
  if (weighting.on) request.rules = current_fit_rules();
  request.long_words = engine.long_words;
  request.wide_kinds = wide_kinds();
  return request;
}

}  // namespace zeb
