// Variables of a task that its parent asks for.
#pragma once

#include "base/packet.h"

namespace zeb {

/// Reads the name of a variable and subscripts, and sends its values; none where there is no such
/// variable, or its dimensions don't allow the subscripts.
void answer_variable_request(packet_reader& from);

}  // namespace zeb
