#pragma once

#include "common/stable/Error.h"
#include "common/stable/PlotBase.h"
#include "common/stable/Result.h"
#include "ms_feature/records/Ms1Feature.h"
#include "ms_feature/records/SegmentationFeature.h"

#include <vector>

namespace zel::segmentation {

using Feature = SegmentationFeature;

/// The candidate between two cut points, with area and half-maximum range measured on the plot.
Result<Feature> measured(const PlotBase& plot, const Interval<double>& span, const QPointF& apex);

/// Keeps the candidates whose value is not 0 (beyond 1e-12) and not below `ratio` times the
/// greatest one. A single candidate stays as it is.
/// \return kError without candidates and when none stays
Result<std::vector<Feature>> filterByShare(const std::vector<Feature>& features,
                                           double (Feature::*value)() const,
                                           double ratio);

/// Keeps the candidates that lie wholly within `window` minutes around the apex of the one with the
/// largest area (the first one of several); at least that one.
/// \return kError without candidates
Result<std::vector<Feature>> filterByDistance(const std::vector<Feature>& features, double window);

/// The index of the point nearest to `time`, the earlier one of two.
/// \return kBadParameterError for an empty plot
Error nearestPointIndex(const PlotBase& plot, double time, int* index);

/// Trims the flanks below `ratio` times the height of the candidate, and takes one point more at a
/// flank that falls by more than that at once. Only the time interval changes.
/// \return kError for a candidate that ends before it starts
Error tightenFeature(const PlotBase& plot, double ratio, Feature* feature);

/// Lets neighbours that overlap meet at the lower one of the two ends.
void removeOverlaps(const PlotBase& plot, std::vector<Feature>* features);

/// Merges neighbours that touch (within 0.01 min) where the plot has no real valley between them:
/// the apex of one of the two differs from the boundary's height by less than `intensityRatio` of
/// that height, and the apex of one of the two lies within `minSkew` of its duration from the
/// boundary. All candidates are measured again on the plot, without matches; those without area go.
/// Nothing changes with fewer than two candidates or with a ratio of 0 or less.
Error mergeContiguousFeatures(const PlotBase& plot,
                              double intensityRatio,
                              double minSkew,
                              std::vector<Feature>* features);

/// Gives each match to the candidate nearest to its time, however far away; the first one of
/// several.
void distributePSMToFeatures(const QList<PeptideSpectrumMatch>& psms,
                             std::vector<Feature>* features);

/// The candidates as the intervals of one feature; the areas are left to the frame.
Ms1Feature assembleFeature(const std::vector<Feature>& features, const PlotBase& xic);

} // namespace zel::segmentation
