#pragma once

#include "common/ms_types/Interval.h"
#include "feature_finder/clusters/ScanIteratorV2HillClusteromatic.h"
#include "feature_finder/finders/FeatureFinderV2.h"
#include "feature_finder/hills/ScanIteratorV2HillBuilder.h"
#include "feature_finder/records/Hill.h"

#include <Eigen/Core>
#include <Eigen/SparseCore>

namespace zel {

/// The matrix of a run with the scans of its columns.
struct FrameRawGroup
{
    Eigen::SparseMatrix<double, 0, int> frameRaw; ///< m/z bins by columns; summed intensities
    /// For each column the number of the last scan in it, 0 where there is none; may be longer than
    /// the matrix has columns.
    Eigen::VectorXd d1Values;
};

class FeatureFinderV2::Private
{
public:
    ScanIteratorV2HillBuilder hillBuilder;
    ScanIteratorV2HillClusteromatic clusteromatic;
    SettableFeatureFinderParameters parameters;
    /// Minutes of the scans that were loaded, by scan number.
    QMap<int, double> scanRetentionTimes;

    /// The hills of the scans at these positions, in scan numbers and measured m/z.
    /// \param scanRange  positions in the ascending list of MS1 scan numbers, the end excluded;
    ///                   (0, 0) for all
    Result<QList<HillD1>> featureFinderBuildHillsChunk(msreader::MsDataSourceInterface* source,
                                                       const Interval<int>& scanRange);

    /// Reads the scans into a matrix. `d2HashFactor` scans make a column; those that would lie
    /// after the last whole column are left out.
    Error buildFrameRaw(msreader::MsDataSourceInterface* source,
                        const Interval<int>& scanRange,
                        FrameRawGroup* group);

private:
    Error resize(int scanCount, FrameRawGroup* group) const;
    void filterNoise(FrameRawGroup* group) const;
};

} // namespace zel
