#pragma once

#include "tools/training/HillScene.h"

#include <Eigen/SparseCore>

#include <functional>

namespace zel::training {

/// A slice as the clustering sees it, with the right answers.
struct Example
{
    Eigen::SparseVector<double> slice;
    double mz = 0.0; ///< of the peak
    int charge = 0;  ///< 0: the peak founds no cluster
    int offset = 0;  ///< isotope steps from the monoisotopic peak
    double massDa = 0.0;
    double signalToNoise = 0.0;  ///< of the peak
    int isotopesSeen = 0;        ///< isotopes of the cluster in the slice, the peak included
    int interferingClusters = 0; ///< others with a peak of a twentieth of this one or more
};

/// Takes the clusters out of a scene as the finder does, but by the truth instead of the networks,
/// and shows each slice on the way: those that found a cluster, and a small part of the others.
/// \param failureShare  clusters that are taken for nothing at their strongest peak
void peelByTruth(const HillScene& scene,
                 double failureShare,
                 const std::function<void(const Example&)>& use);

} // namespace zel::training
