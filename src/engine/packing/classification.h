// Which characters take part, and how wide their fields are.
#pragma once

#include "engine/packing/packing_plan.h"
#include "engine/packing/packing_request.h"

namespace zeb {

/// Classifies the characters of the request and places their fields. Least and most steps are those
/// over the taxa of the request. Under implied weights characters keep their own weights, and those
/// of several fields come first. Errors for characters that can't be searched.
packing_plan plan_packing(const packing_request& request);

}  // namespace zeb
