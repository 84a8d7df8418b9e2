#pragma once

#include "common/stable/Export.h"

#include <QList>
#include <QString>

namespace zel {

/// Decides from a neutral mass which isotope of a peptide to extract: the heavier the peptide, the
/// further up its pattern the tallest peak lies. A plain value.
class ZEL_EXPORT IsotopeSelector
{
public:
    /// The thresholds 1800, 3000, 5000, 8000, 10000, 20000, 40000 and 80000 Da.
    IsotopeSelector();

    /// Ascending mass thresholds, Da.
    QList<double> isotopeMasses() const { return m_isotopeMasses; }
    void setIsotopeMasses(const QList<double>& masses) { m_isotopeMasses = masses; }

    /// The isotope number for a neutral mass in Da: the index of the first threshold that is not
    /// below it; one past the last index when there is none, or for NaN.
    int isotopeToUse(double mass) const;

    /// The thresholds, joined with ", ".
    QString toString() const;

private:
    QList<double> m_isotopeMasses;
};

} // namespace zel
