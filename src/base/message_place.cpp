#include "base/message_place.h"

namespace zeb {

message_place_state message_place;

}  // namespace zeb
