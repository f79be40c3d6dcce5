#include "front/front.h"

namespace quillon {

const Front *front = nullptr;

} // namespace quillon
