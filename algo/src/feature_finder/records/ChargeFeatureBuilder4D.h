#pragma once

#include "common/ms_types/Interval.h"
#include "common/stable/Export.h"
#include "feature_finder/records/ChargeFeatureFrame.h"

#include <QList>
#include <QPointF>

namespace zel {

/// Collects the clusters that one charge state shows in the frames along retention.
///
/// What it says about the apex is read off the strongest frame (of equally strong ones the first
/// pushed), so it moves as stronger frames come in. An empty builder answers with the fields of a
/// default ChargeFeatureFrame.
class ZEL_EXPORT ChargeFeatureBuilder4D
{
public:
    void pushBackChargeFeatureFrame(const ChargeFeatureFrame& frame);

    /// The number of frames.
    int chargeFeaturesCount() const { return static_cast<int>(m_frames.size()); }

    double mzApexOfCluster() const { return maxChargeFeatureFrameByIntensity().mzApexOfCluster; }
    double mzFirstOfCluster() const { return maxChargeFeatureFrameByIntensity().mzFirstOfCluster; }
    double apexMonoIsotopicMass() const
    {
        return maxChargeFeatureFrameByIntensity().monoIsotopicMass;
    }
    double apexIntensity() const { return maxChargeFeatureFrameByIntensity().intensity; }
    double apexAveragine() const { return maxChargeFeatureFrameByIntensity().averagine; }
    int apexD1() const { return maxChargeFeatureFrameByIntensity().d1; }
    int apexD2() const { return maxChargeFeatureFrameByIntensity().apexD2; }
    int charge() const { return maxChargeFeatureFrameByIntensity().charge; }
    int monoOffsetOfMzApexOfCluster() const
    {
        return maxChargeFeatureFrameByIntensity().monoOffset;
    }
    double apexIsotopeCount() const { return maxChargeFeatureFrameByIntensity().isotopeCount; }

    /// The smallest and the greatest frame number; (0, 0) for an empty builder.
    Interval<int> d1Range() const;

    /// The D2 limits of the strongest frame, not those of all frames.
    Interval<int> d2Range() const;

    /// One point (D1, intensity) for each frame, ascending in D1.
    QList<QPointF> d1Xic() const;

    /// The intensity-weighted mean of D1; 0 for an empty builder.
    double weightedD1() const;

private:
    ChargeFeatureFrame maxChargeFeatureFrameByIntensity() const;
    QList<QPointF> d1Points() const;

    QList<ChargeFeatureFrame> m_frames; ///< in the order of pushing
    qsizetype m_strongest = 0;          ///< index of the strongest frame
};

} // namespace zel
