#include "ovdb/OvGePoint3d.h"

#include <cmath>

bool OvGePoint3d::isFinite() const {
    return std::isfinite(x) && std::isfinite(y) && std::isfinite(z);
}
