#pragma once

#include "common/ms_types/XicDimensions.h"
#include "common/stable/Result.h"

#include <QList>
#include <QString>

namespace zel::tool {

/// Boxes whose chromatograms are summed into one of this name.
struct XicTarget
{
    QString name;
    QList<XicDimensions> members;
};

/// The m/z window of `mz` plus and minus `ppm` parts per million.
math::ClosedMultiInterval<double, 10> mzWindow(double mz, double ppm);

/// Reads a table of windows with the columns `name`, and `mz` and `ppm` or `mz_start` and `mz_end`;
/// optional are `rt_start` and `rt_end` (minutes; an empty cell leaves that side open) and `group`.
/// Rows of one group make one target of the group's name, at the place of the group's first row.
/// \return kFileOpenError, or kFileFormatError naming the line
Result<QList<XicTarget>> readXicWindows(const QString& path);

} // namespace zel::tool
