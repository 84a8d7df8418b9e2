#include "feature_finder/hills/HillsUtils.h"

#include "feature_finder/records/CsvFile_p.h"

#include <QTextStream>

namespace zel {

void HillsUtils::writeHillsListToCSV(const QList<HillD2>& hills, const QString& path)
{
    writeCsvFile(path, [&hills](QTextStream& stream) {
        stream << "mzApex,mzLo,mzHi,d2Lo,d2Hi,d2Apex,intensity\n";
        for (const HillD2& hill : hills) {
            stream << QStringLiteral("%1,%2,%3,%4,%5,%6,%7\n")
                          .arg(hill.mzApex)
                          .arg(hill.mzLo)
                          .arg(hill.mzHi)
                          .arg(hill.d2Lo)
                          .arg(hill.d2Hi)
                          .arg(hill.d2Apex)
                          .arg(hill.intensity);
        }
    });
}

void HillsUtils::writeHillsListToCSV(const QList<HillD1>& hills,
                                     const QString& path,
                                     const QMap<int, double>& indexToRetentionTime)
{
    constexpr double opacity = 0.3;
    writeCsvFile(path, [&hills, &indexToRetentionTime](QTextStream& stream) {
        stream << "mzLo,mzHi,rtLo,rtHi,color,opacity,misc\n";
        for (const HillD1& hill : hills) {
            const QString apex = QString::number(hill.mzApex, 'g', 6) + QLatin1Char(' ') +
                                 QString::number(hill.d1Apex);
            stream << QStringLiteral("%1, %2, %3, %4, %5, %6, %7\n")
                          .arg(hill.mzLo)
                          .arg(hill.mzHi)
                          .arg(indexToRetentionTime.value(hill.d1Lo))
                          .arg(indexToRetentionTime.value(hill.d1Hi))
                          .arg(QStringLiteral("#FF0000"))
                          .arg(opacity)
                          .arg(apex);
        }
    });
}

} // namespace zel
