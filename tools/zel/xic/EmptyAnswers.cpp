#include "tools/zel/xic/EmptyAnswers.h"

#include "tools/zel/cli/Messages.h"

#include <QStringList>

#include <algorithm>

namespace zel::tool {

namespace {

bool isZero(const NamedXic& xic)
{
    return std::ranges::none_of(xic.points, [](const QPointF& point) { return point.y() != 0.0; });
}

/// "mz_500", or "2 of 3 windows, such as mz_500".
QString windowsText(const QStringList& names, qsizetype count)
{
    return count == 1
               ? names.constFirst()
               : QString::number(names.size()) + QStringLiteral(" of ") + QString::number(count) +
                     QStringLiteral(" windows, such as ") + names.constFirst();
}

/// " (the run lasts from 0 to 10 min)"; nothing where the source does not know.
QString timesText(msreader::MsDataSourceInterface* source)
{
    const auto times = source->retentionTimeRange();
    if (!times.isOk() || times.value().isEmpty()) {
        return {};
    }
    return QStringLiteral(" (the run lasts from %1 to %2 min)")
        .arg(*times.value().minimum(), 0, 'g', 6)
        .arg(*times.value().maximum(), 0, 'g', 6);
}

} // namespace

void tellEmptyXics(const QList<NamedXic>& xics, msreader::MsDataSourceInterface* source)
{
    QStringList withoutScans;
    QStringList withoutSignal;
    for (const NamedXic& xic : xics) {
        if (xic.points.isEmpty()) {
            withoutScans.append(xic.name);
        } else if (isZero(xic)) {
            withoutSignal.append(xic.name);
        }
    }
    if (!withoutScans.isEmpty()) {
        tell(QStringLiteral("no scan lies in the times of ") +
             windowsText(withoutScans, xics.size()) + timesText(source));
    }
    if (!withoutSignal.isEmpty()) {
        tell(QStringLiteral("there is no signal in ") + windowsText(withoutSignal, xics.size()));
    }
}

} // namespace zel::tool
