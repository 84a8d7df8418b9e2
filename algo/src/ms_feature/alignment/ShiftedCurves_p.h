#pragma once

#include "common/stable/Error.h"

#include <QList>

#include <vector>

/// Arithmetic of curves on one regular grid that are shifted by whole steps. Shifting a curve by s
/// puts its sample i at index i + s; what lies off a curve does not count.
namespace zel::shifted {

/// The indices of one curve whose partner, `offset` further on, lies on the other.
struct Overlap
{
    Overlap(qsizetype size, qsizetype otherSize, qint64 offset);

    qint64 first; ///< included
    qint64 last;  ///< not included
};

/// How a shift of `shift` out of at most `maxShift` (not negative) steps is weighted, 0 to 1: see
/// Ms1FeatureAlignSettings::power. 0 when there is no shift to choose.
double penalty(qint64 shift, qint64 maxShift, double power);

/// Pearson's correlation of two shifted curves where both have samples; 1 when one of them is
/// constant there; 0 when they do not meet.
double correlation(const QList<double>& reference,
                   int referenceShift,
                   const QList<double>& plot,
                   int shift);

/// The sum of the shifted curves, on the indices of the first one. A single curve comes back as it
/// is.
/// \return kError without curves; kBadParameterError unless there is one shift for each
Error sum(const QList<QList<double>>& plots, const QList<int>& shifts, QList<double>* summed);

/// The index of the value in the middle of the ascending order, of two the later; equal values
/// stand in the order of the list, which must not be empty.
int middleOne(const std::vector<double>& values);

} // namespace zel::shifted
