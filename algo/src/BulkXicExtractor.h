#pragma once

#include "common/ms_types/MsDataSourceInterface.h"
#include "common/ms_types/XicDimensions.h"
#include "common/stable/Export.h"
#include "common/stable/Progress.h"
#include "common/stable/Result.h"

#include <QList>
#include <QPointF>

namespace zel {

/// Cuts many extracted ion chromatograms (XICs) out of a data source in a single pass: each scan is
/// read once, in chunks of 250, however many XICs need it.
///
/// The cost is that of reading the selected scans plus two bisections for each point produced; it
/// does not depend on the number of pairs of scan and XIC that have nothing to do with each other.
/// Works on the calling thread; calls share no state, so one object serves several threads when its
/// source does.
class ZEL_EXPORT BulkXicExtractor
{
public:
    /// Folds the heights that the members of a group have at one time, in member order, into one.
    /// Called on the calling thread with the index of the group; must not fail.
    using Aggregate = double (*)(int groupIndex, const QList<double>& values);

    /// \param source  borrowed; must outlive the object. It is not checked: no null
    explicit BulkXicExtractor(msreader::MsDataSourceInterface* source);

    /// One XIC for each element of `dimensions`, in order. An XIC has one point (minutes, sum of
    /// the intensities inside the m/z set) for each scan whose time lies in the time set; a scan
    /// without a peak there gives intensity 0, one whose time is NaN belongs to no XIC. The m/z
    /// sets are closed, and widened by 1e-10 at each end. \param msLevel   the level of the scans
    /// that are read \param filter    Profile or Centroid \param progress  one step a chunk; may be
    /// null \return kBadParameterError for another filter, kOperationCanceledError, kError when the
    ///         source gives fewer or more spectra than asked for or memory runs out, or the failure
    ///         of the source
    Result<QList<QList<QPointF>>> xic(const QList<XicDimensions>& dimensions,
                                      int msLevel,
                                      msreader::PeakPickingFilter filter,
                                      const QSharedPointer<ProgressBarInterface>& progress) const;

    /// One XIC for each group, in order: the XICs of its members merged over the union of their
    /// times, point by point through `aggregate`; a member without a point at a time counts there
    /// as 0.0. A group of one member is that member's XIC, a group of none is empty.
    /// \return also kError for a null `aggregate` with a group of several members
    Result<QList<QList<QPointF>>> xic(const QList<QList<XicDimensions>>& dimensionGroups,
                                      const Aggregate& aggregate,
                                      int msLevel,
                                      msreader::PeakPickingFilter filter,
                                      const QSharedPointer<ProgressBarInterface>& progress) const;

private:
    msreader::MsDataSourceInterface* m_source;
};

} // namespace zel
