#pragma once

#include "common/stable/Error.h"
#include "common/stable/Export.h"

#include <QList>

namespace zel {

/// The curve of one sample on a regular grid, with what is known of its feature. A plain value.
class ZEL_EXPORT MSLocalAlignData
{
public:
    MSLocalAlignData() = default;
    MSLocalAlignData(const MSLocalAlignData&) = default;
    MSLocalAlignData(MSLocalAlignData&&) = default;
    MSLocalAlignData& operator=(const MSLocalAlignData&) = default;
    MSLocalAlignData& operator=(MSLocalAlignData&&) = default;
    virtual ~MSLocalAlignData();

    const QList<double>& xicPlot() const { return m_xicPlot; }
    void setXicPlot(const QList<double>& plot) { m_xicPlot = plot; }

    // Indices on the grid; -1 where unknown.
    int featureStartHint() const { return m_featureStartHint; }
    void setFeatureStartHint(int index) { m_featureStartHint = index; }
    int featureEndHint() const { return m_featureEndHint; }
    void setFeatureEndHint(int index) { m_featureEndHint = index; }
    int apexHint() const { return m_apexHint; }
    void setApexHint(int index) { m_apexHint = index; }

private:
    QList<double> m_xicPlot;
    int m_featureStartHint = -1;
    int m_featureEndHint = -1;
    int m_apexHint = -1;
};

/// Shifts curves on one regular grid so that they lie over one of them, the pivot. No state; safe
/// to call from several threads.
class ZEL_EXPORT MSLocalAlign
{
public:
    /// For each curve the shift, in grid steps, of the greatest dot product with the pivot's curve,
    /// weighted by `power` as Ms1FeatureAlignSettings says, among the shifts of at most `maxShift`
    /// steps either way; of several equal ones the lowest. A positive shift moves a curve to
    /// later indices. A shift of -maxShift stands for none found: it becomes 0, as does that of a
    /// curve whose weighted products are nowhere positive or all within 0.1 % of the best.
    /// \param pivot   the index of the curve that stays; negative: the one in the middle of the
    ///                order of the apexes, the later of two. Without an apex hint the apex is the
    ///                highest sample between the other two hints
    /// \param shifts  one for each curve
    /// \return kBadParameterError without data or for a pivot beyond it
    /// \note O(curves * maxShift * samples), contiguous.
    static Error align(const QList<MSLocalAlignData>& data,
                       int pivot,
                       int maxShift,
                       QList<int>* shifts,
                       double power);

protected:
    /// The sum of a[i] * b[i - shift] over the indices that both have, sample by sample in one sum.
    static double shiftedDotProductV1(const QList<double>& a, const QList<double>& b, int shift);
    /// The same, with the summands in eight partial sums in turn, so that the compiler may keep
    /// them in vector registers and the result is still the same in every build.
    static double shiftedDotProductV2(const QList<double>& a, const QList<double>& b, int shift);

private:
    static Error alignUniformPlots(const QList<double>& pivot,
                                   const QList<double>& plot,
                                   double power,
                                   int maxShift,
                                   int* shift);
};

} // namespace zel
