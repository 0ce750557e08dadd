// Bremer supports by whatever way a request names.
#pragma once

#include "supports/bremer_requests.h"

namespace zeb {

/// What it prints on the way are warnings. Errors: where there is nothing to calculate the supports
/// from.
bremer_result requested_supports(const bremer_request& request);

}  // namespace zeb
