#include "feature_finder/records/FeatureFinderObjectUtils.h"

#include "common/stable/JsonText_p.h"
#include "common/stable/Logging.h"
#include "feature_finder/records/CsvFile_p.h"

#include <QTextStream>

namespace zel {

void FeatureFinderObjectUtils::writeChargeFeaturesJSONToText(const QString& path,
                                                             const QList<ChargeFeature>& features)
{
    writeJsonFile(path,
                  ChargeFeatureList(features).serialize(),
                  "provide a valid read-write text file to export ChargeFeature(s)");
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
    if (const std::optional<QString> text = readJsonFile(path)) {
        ZEL_RETURN_IF_ERROR(features.deserialize(*text));
    }
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
