#include "taxonomy/registration.h"

#include "language/settings_scope.h"
#include "taxonomy/taxonomy.h"

namespace zeb {

void register_taxonomy() { add_settings(noted<taxonomy>); }

}  // namespace zeb
