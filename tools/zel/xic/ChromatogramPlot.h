#pragma once

#include <QByteArray>
#include <QList>
#include <QPointF>
#include <QString>

namespace zel::tool {

/// A chromatogram under its name.
struct NamedXic
{
    QString name;
    QList<QPointF> points; ///< (minutes, intensity), ascending in time
};

/// A page of HTML with one drawing (inline SVG, no scripts) of the chromatograms, which any browser
/// opens. Of more than 24 the highest are drawn, and the page says so.
QByteArray chromatogramPage(const QString& title, const QList<NamedXic>& xics);

} // namespace zel::tool
