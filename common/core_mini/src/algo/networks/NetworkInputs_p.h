#pragma once

#include <Eigen/Core>
#include <Eigen/SparseCore>
#include <QJsonObject>

namespace zel {

/// What the networks of ChargeDeterminatorNN and MonoisotopeDeterminatorNN are given. Training uses
/// the same functions. Whoever changes what they compute must raise the version of the layout and
/// train again (tools/training).
///
/// The height of a peak goes in as the square root of its share of the peak in the middle of the
/// slice, at most 2, so that weak isotopes count and interfering peaks do not drown them.
namespace networkinputs {

/// Answers of the charge network: none, 1 to 10.
inline constexpr int kChargeOutputs = 11;
/// Answers of the offset network: 0 to 15.
inline constexpr int kOffsetOutputs = 16;

/// Whether this is a slice with a peak in its middle.
bool isUsable(const Eigen::SparseVector<double>& slice);

int chargeInputCount();
int offsetInputCount();

/// For each charge the heights near the places of its isotopes -6 to 8 in a narrow and in a wide
/// window, and halfway between them (which shows a multiple of the charge, or noise); then the
/// logarithm of the number of stored entries. Peaks near a place are told apart by the two windows,
/// as the precision of m/z differs between instruments and the m/z is not known here.
/// \param slice  isUsable
Eigen::VectorXf chargeInputs(const Eigen::SparseVector<double>& slice);

/// The heights near the places of the isotopes -18 to 14 of this charge, in a narrow and in a wide
/// window, -1 beyond the slice; for each offset the cosine of the wide ones and averagine; the
/// pattern of averagine; the logarithm of the mass; which charge it is.
/// \param slice   as above
/// \param mz      of the peak in its middle
/// \param charge  1 to 10
Eigen::VectorXf offsetInputs(const Eigen::SparseVector<double>& slice, double mz, int charge);

/// The cosines among these inputs, by offset.
Eigen::VectorXf averagineCosines(const Eigen::VectorXf& offsetInputs);

/// Describes the above; a network file must hold the same.
QJsonObject layout();

} // namespace networkinputs
} // namespace zel
