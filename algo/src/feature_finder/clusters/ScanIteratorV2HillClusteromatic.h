#pragma once

#include "common/core_mini/src/algo/clusters/SpectraSubtractomatic.h"
#include "common/core_mini/src/algo/networks/ChargeDeterminatorNN.h"
#include "common/core_mini/src/algo/networks/MonoisotopeDeterminatorNN.h"
#include "common/core_mini/src/algo/parameters/SettableFeatureFinderParameters.h"
#include "common/stable/Export.h"
#include "common/stable/Result.h"
#include "feature_finder/records/ChargeFeature.h"
#include "feature_finder/records/ChargeFeatureFrame.h"
#include "feature_finder/records/Hill.h"

#include <Eigen/SparseCore>
#include <QList>
#include <QMap>

#include <functional>

namespace zel {

/// Gathers hills into isotope clusters of known charge.
///
/// The hills become points of a matrix, bins of m/z down, D2 (or D1) columns across, one point per
/// hill at its apex. Then, strongest point first, the columns around a point are summed to a
/// spectrum, networks say the charge and the monoisotopic offset, and the cluster's averagine
/// model is subtracted from the matrix, so that its other hills found no clusters of their own.
///
/// Keeps nothing between calls; one object is for one thread at a time.
class ZEL_EXPORT ScanIteratorV2HillClusteromatic
{
public:
    /// Loads the networks of `params.networkFilePath`. To be called once, before anything else.
    /// \return the failures of ChargeDeterminatorNN::init and SpectraSubtractomatic::init
    Error init(const SettableFeatureFinderParameters& params);

    bool isInit() const { return m_isInit; }

    /// The clusters of the hills of one mobility frame. A cluster takes its limits and its
    /// intensity from the hill at its strongest point. Clusters of too few isotopes, too low an
    /// averagine score or a mass out of range are left out; see SettableFeatureFinderParameters.
    /// \param hills  d2ApexIndex is the column
    /// \return in descending order of the points' intensities; kError before `init` and for a list
    ///         without signal, such as an empty one; kBadParameterError for a hill whose apex lies
    ///         below m/z 0, more than half a slice above maxMz, or at a negative column, or is not
    ///         finite
    Result<QList<ChargeFeatureFrame>> buildChargeFeatures(QList<HillD2> hills);

    /// The clusters of the hills of a whole run without mobility, as above; d1ApexIndex is the
    /// column.
    Result<QList<ChargeFeature>> buildChargeFeatures(QList<HillD1> hills);

private:
    template <typename Hill>
    struct FrameGroup
    {
        Eigen::SparseMatrix<double, 0, int> frameRaw; ///< apex intensities; the extraction eats it
        Eigen::SparseMatrix<int, 0, int> hillIndex;   ///< at the same places the hill's number
        QMap<int, Hill> hills;                        ///< by number: the place in the list
    };
    using FrameGroupD1 = FrameGroup<HillD1>;
    using FrameGroupD2 = FrameGroup<HillD2>;
    struct Cluster;

    template <typename Hill>
    Error checkInput(const QList<Hill>& hills) const;

    FrameGroupD1 buildClusterRawFrameGroup(const QList<HillD1>& hills) const;
    FrameGroupD2 buildClusterRawFrameGroup(const QList<HillD2>& hills) const;

    Result<QList<ChargeFeature>> extractChargeFeaturesFromFrameRaw(FrameGroupD1* group) const;
    Result<QList<ChargeFeatureFrame>> extractChargeFeaturesFromFrameRaw(FrameGroupD2* group) const;

    /// Takes the clusters out of the matrix, strongest point first.
    Error extractClusters(Eigen::SparseMatrix<double, 0, int>* frameRaw,
                          int halfWidthColumns,
                          const std::function<void(const Cluster&)>& append) const;

    /// Completes a cluster of known point and charge, and says what it explains.
    Error describe(const Eigen::SparseVector<double, 0, int>& profile,
                   int width,
                   Cluster* cluster,
                   DecimatorMatrix* decimator) const;

    /// The m/z of the first hill near the place of the monoisotopic peak, or that place. Mind the
    /// tolerance: ppmTolerance of the product of charge and m/z, for a difference of m/z.
    double findMzOfFirstHillInIsotopeCluster(const QList<HillD2>& hills,
                                             double mz,
                                             int monoOffset,
                                             int charge) const;

    SettableFeatureFinderParameters m_params;
    SpectraSubtractomatic m_subtractomatic;
    ChargeDeterminatorNN m_chargeDeterminator;
    MonoisotopeDeterminatorNN m_monoisotopeDeterminator;
    bool m_isInit = false;
};

} // namespace zel
