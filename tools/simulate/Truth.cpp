#include "tools/simulate/Truth.h"

#include "common/stable/NumberText.h"

#include <QFileInfo>
#include <QSaveFile>

namespace zel::simulate {

namespace {

constexpr char kHeader[] = "sample\tsequence\tmono_mass\tcharge\tmz\trt_start\trt_apex\trt_end\t"
                           "rt_reference\tmobility_start\tmobility_apex\tmobility_end\t"
                           "apex_intensity\tarea\tisotope_fractions\n";

QByteArray row(const TrueIon& ion)
{
    QByteArrayList fractions;
    for (const double fraction : ion.isotopeFractions) {
        fractions.append(roundTripText(fraction));
    }
    const QByteArrayList columns = {QByteArray::number(ion.sample + 1),
                                    ion.sequence.toUtf8(),
                                    roundTripText(ion.mass),
                                    QByteArray::number(ion.charge),
                                    roundTripText(ion.mz),
                                    roundTripText(ion.rtStart),
                                    roundTripText(ion.rtApex),
                                    roundTripText(ion.rtEnd),
                                    roundTripText(ion.rtReference),
                                    roundTripText(ion.mobilityStart),
                                    roundTripText(ion.mobilityApex),
                                    roundTripText(ion.mobilityEnd),
                                    roundTripText(ion.apexIntensity),
                                    roundTripText(ion.area),
                                    fractions.join(',')};
    return columns.join('\t') + '\n';
}

} // namespace

Error writeTruth(const QString& path, const QList<TrueIon>& ions)
{
    QSaveFile file(path);
    const QFileInfo info(path); // a QSaveFile would put a file in the place of a device
    if ((info.exists() && !info.isFile()) || !file.open(QIODevice::WriteOnly)) {
        ZEL_RETURN_ERROR(
            kFileOpenError,
            QStringLiteral("File %1 cannot be written: %2").arg(path, file.errorString()));
    }
    file.write(kHeader);
    for (const TrueIon& ion : ions) {
        file.write(row(ion));
    }
    if (!file.commit()) { // tells of failed writes too
        ZEL_RETURN_ERROR(
            kError, QStringLiteral("File %1 was not written: %2").arg(path, file.errorString()));
    }
    return kNoError;
}

} // namespace zel::simulate
