#pragma once

#include <QList>
#include <QPointF>

#include <vector>

namespace zel::segmentation {

/// Where the editions of the adaptive finder differ; they share all else.
struct Policy
{
    /// When neighbours without a real valley between them are merged.
    enum class Merging {
        Never,
        BeforeScoring, ///< candidates far from the strongest one then stay
        AtEnd,
    };

    double samplesPerMinute = 0.0;  ///< of the grid
    std::vector<double> kernel;     ///< smooths the curve on the grid
    bool smoothsMagnitudes = false; ///< takes heights without their sign and cuts sums at 0
    /// The alternating extremes of the smoothed curve.
    QList<QPointF> (*extremesOf)(const QList<QPointF>& curve) = nullptr;
    /// Extremes are moved onto, and candidates measured on, the curve on the grid, not the XIC.
    bool cutsOnGrid = false;
    double fillerHeight = 0.0; ///< a maximum that is no higher is a filler
    bool keepsFillers = false; ///< and still makes a candidate
    Merging merging = Merging::Never;
};

} // namespace zel::segmentation
