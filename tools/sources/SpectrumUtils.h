#pragma once

#include "common/ms_types/ClosedMultiInterval.h"

#include <QList>
#include <QPointF>
#include <QString>

namespace zel::msreader {

// Free helpers over spectra, lists of (m/z, intensity).

/// The sum of several spectra: all their points, ascending in m/z. Points of exactly equal m/z, as
/// the scans of one time-of-flight digitiser have them, become one whose intensity is their sum.
/// \param spectra  each ascending in m/z
QList<QPointF> mergeSpectra(QList<QList<QPointF>> spectra);

/// Sorts by m/z and adds up points of exactly equal m/z.
void sortAndJoinEqualMz(QList<QPointF>& points);

/// What is wrong with the points of a spectrum, in words for an error message; empty when nothing
/// is: m/z finite, positive and ascending (equal ones may follow each other), intensities finite
/// and not negative.
QString firstFaultOf(const QList<QPointF>& points);

/// Leaves out the points whose m/z the set does not contain.
/// \param points  ascending in m/z
void restrictToMz(QList<QPointF>& points, const math::ClosedMultiInterval<double, 10>& mz);

} // namespace zel::msreader
