#pragma once

#include "common/ms_types/Interval.h"
#include "common/stable/Error.h"
#include "common/stable/Export.h"
#include "feature_finder/records/ChargeFeature.h"

#include <QList>
#include <QSet>

namespace zel {

/// One compound of one sample: all its charge states and pieces along retention.
///
/// What it says about the apex is read off its strongest member, of equally strong ones the first
/// pushed. A master without members answers with the fields of a default ChargeFeature.
class ZEL_EXPORT MasterFeature
{
public:
    /// Appends a member; always succeeds.
    virtual Error pushBackChargeFeature(const ChargeFeature& feature);

    MasterFeature() = default;
    MasterFeature(const MasterFeature&) = default;
    MasterFeature(MasterFeature&&) = default;
    MasterFeature& operator=(const MasterFeature&) = default;
    MasterFeature& operator=(MasterFeature&&) = default;
    virtual ~MasterFeature() = default;

    void setChargeFeatures(const QList<ChargeFeature>& features) { m_features = features; }
    void clearChargeFeatures() { m_features.clear(); }

    /// The members, in the order of pushing.
    QList<ChargeFeature> chargeFeatures() { return m_features; }
    QList<ChargeFeature> chargeFeatures() const { return m_features; }
    int chargeFeaturesCount() const { return static_cast<int>(m_features.size()); }

    ChargeFeature maxChargeFeatureByIntensity() const;

    double monoIsotopicMass() const { return strongest().monoIsotopicMass; }
    double apexD1() const { return strongest().apexD1; }
    double apexD2() const { return strongest().apexD2; }
    double apexAveragine() const { return strongest().averagineScore; }
    double apexIntensity() const { return strongest().apexIntensity; }
    double apexIsotopeCount() const { return strongest().isotopeCount; }

    /// Writes the intensity, cut toward zero, into the strongest member; does nothing without
    /// members.
    void setApexIntensity(double intensity);

    /// The mean of the members' `apexD1`, weighted by their intensities; 0 without members.
    double weightedD1() const;

    /// The smallest start and the greatest end over the members; (0, 0) without members.
    Interval<double> d1Range() const;
    Interval<double> d2Range() const;

    /// The charges that occur.
    QSet<int> charges() const;
    /// The same in ascending order.
    QList<int> sortedCharges() const;

private:
    /// Index of the strongest member; -1 without members.
    qsizetype strongestIndex() const;
    const ChargeFeature& strongest() const;

    QList<ChargeFeature> m_features;
};

class StringifierState;

/// The summary values and all members as lines of text.
ZEL_EXPORT QString stringify(const MasterFeature& master, const StringifierState& state);

} // namespace zel
