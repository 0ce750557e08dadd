#include "search/search_settings.h"

namespace zeb {

search_settings_state search_settings;

}  // namespace zeb
