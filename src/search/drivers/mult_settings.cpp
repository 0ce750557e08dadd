#include "search/drivers/mult_settings.h"

namespace zeb {

mult_settings mult;

}  // namespace zeb
