#pragma once

#include "common/core_mini/src/algo/parameters/SettableFeatureFinderParameters.h"
#include "common/stable/Error.h"
#include "common/stable/Export.h"

#include <Eigen/SparseCore>

namespace zel {

/// What one isotope cluster explains of a matrix of hills.
struct DecimatorMatrix
{
    /// Cosine of the observed isotopes and those of averagine, 0 to 1; see SpectraSubtractomatic.
    double averagineScore = 0.0;
    /// Isotopes that were found, of those above 1 % of the highest.
    int isotopeCount = 0;
    /// What is to be subtracted: absolute bins of m/z in the rows, the same in each column.
    Eigen::SparseMatrix<double, 0, int> model;
};

/// Fits the isotope pattern of averagine to the cluster around a peak, and says how well it fits
/// and what it explains of the signal, so that this can be taken away. See ChargeDeterminatorNN for
/// what a slice is.
///
/// The places of the isotopes follow from the peak, charge and offset; a stored entry within the
/// tolerance of a place belongs to that isotope. The pattern is scaled by the weighted median of
/// observed over theory, over the isotopes that are there and should have at least a fifth of the
/// highest, but never above the peak itself: so neither an interfering peak nor a missing one moves
/// it. The score is the cosine of observed and theory over the places from one before the
/// monoisotopic peak, where nothing should be, to the last isotope above 1 % of the highest, as far
/// as the slice reaches.
///
/// Subtracted is from the bins that hold signal, not from those where theory has it. An entry of up
/// to 1.5 times its model (from the third isotope on: and 5 % of the highest isotope more, for
/// sulphur) goes whole; of a greater one the model is taken off. An isotope counts as found with a
/// fifth of its model.
class ZEL_EXPORT SpectraSubtractomatic
{
public:
    /// \return kBadParameterError for a negative ppmTolerance
    Error init(const SettableFeatureFinderParameters& params);

    /// \param profile     a slice
    /// \param mz          m/z of the peak, the centre of the slice
    /// \param charge      at least 1
    /// \param monoOffset  isotope steps from the monoisotopic peak up to the peak
    /// \param width       columns of the model, at least 1. The hills of one cluster have their
    ///                    apexes some columns apart, so each column gets the whole model
    /// \param out         replaced on success; the model has clusterRows() rows
    /// A mass below 0, lighter than its protons, explains nothing: no score, no isotope, no entry.
    /// \return kError before `init`, kBadParameterError for arguments out of range
    Error buildChargeClusterDecimator(Eigen::SparseVector<double, 0, int> profile,
                                      double mz,
                                      int charge,
                                      int monoOffset,
                                      int width,
                                      DecimatorMatrix* out) const;

    /// Rows of a matrix of hills, and so of the model: all bins up to maxMz and half a slice beyond
    /// (g_immutableFeatureFinderParameters).
    static int clusterRows();

private:
    bool m_isInit = false;
    int m_ppmTolerance = 0;
    bool m_addedProtons = true;
};

} // namespace zel
