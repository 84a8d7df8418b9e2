#include "feature_finder/records/FeatureFinderObjectUtils.h"

#include "common/stable/Logging.h"
#include "feature_finder/records/CsvFile_p.h"

#include <QFile>
#include <QTextStream>

namespace zel {

void FeatureFinderObjectUtils::writeChargeFeaturesJSONToText(const QString& path,
                                                             const QList<ChargeFeature>& features)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text)) {
        qCDebug(algoLog) << "provide a valid read-write text file to export ChargeFeature(s)";
        return;
    }
    const QByteArray text = ChargeFeatureList(features).serialize().toUtf8();
    if (file.write(text) != text.size() || !file.flush()) {
        qCWarning(algoLog) << "Cannot write JSON file:" << path << file.errorString();
        return;
    }
    qCDebug(algoLog) << "writing JSON output(s) to text complete";
}

Result<ChargeFeatureList> FeatureFinderObjectUtils::readChargeFeatureListJSONFromText(
    const QString& path)
{
    Error e;
    ChargeFeatureList features;
    if (path.isEmpty()) {
        qCDebug(algoLog) << "provided text file is empty";
        return features;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        qCDebug(algoLog).noquote()
            << QStringLiteral("provided file is not a readonly text file: %1").arg(path);
        return features;
    }
    ZEL_RETURN_IF_ERROR(features.deserialize(QString::fromUtf8(file.readAll())));
    return features;
}

void FeatureFinderObjectUtils::writeChargeFeaturesToCSV(const QString& path,
                                                        const QList<ChargeFeature>& features)
{
    writeCsvFile(path, [&features](QTextStream& stream) {
        stream << "mz,monoMass,intensity,averagine,startD1,endD1,apexD1,startD2,endD2,apexD2,"
                  "isotopeCount,charge,apexIndex,monoOffset\n";
        for (const ChargeFeature& feature : features) {
            stream << QStringLiteral(
                          "%1, %2, %3, %4, %5, %6, %7, %8, %9, %10, %11, %12, %13, %14\n")
                          .arg(feature.mzApexOfCluster)
                          .arg(feature.monoIsotopicMass)
                          .arg(feature.apexIntensity)
                          .arg(feature.averagineScore)
                          .arg(feature.startD1)
                          .arg(feature.endD1)
                          .arg(feature.apexD1)
                          .arg(feature.startD2)
                          .arg(feature.endD2)
                          .arg(feature.apexD2)
                          .arg(feature.isotopeCount)
                          .arg(feature.charge)
                          .arg(feature.apexIndex)
                          .arg(feature.monoOffset);
        }
    });
}

} // namespace zel
