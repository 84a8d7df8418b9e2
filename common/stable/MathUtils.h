#pragma once

#include "common/stable/Export.h"

namespace zel {

/// Scalar helpers that several subsystems share.
class ZEL_EXPORT MathUtils
{
public:
    /// True when |a - b| is at most 1e-12 times the greatest of 1, |a| and |b|. False when either
    /// is NaN.
    static bool nearlyEqual(double a, double b);
};

} // namespace zel
