#include "common/ms_types/TurboXicSettings.h"

#include "common/stable/Stringify.h"

#include <QDataStream>
#include <QMetaEnum>
#include <QTextStream>

namespace zel {

using msreader::PeakPickingFilter;

namespace {

/// The name of the filter, or its number when it has none.
QString filterText(PeakPickingFilter filter)
{
    const int value = static_cast<int>(filter);
    const char* const key = QMetaEnum::fromType<PeakPickingFilter>().valueToKey(value);
    return key != nullptr ? QString::fromLatin1(key) : QString::number(value);
}

} // namespace

QDataStream& operator<<(QDataStream& stream, const TurboXicSettings& settings)
{
    return stream << qint32{settings.granularity} << qint32{settings.maxMz}
                  << qint32{settings.maxIonCount} << static_cast<quint8>(settings.peakPickingFilter)
                  << quint8{settings.preGuavaCompatible};
}

QDataStream& operator>>(QDataStream& stream, TurboXicSettings& settings)
{
    qint32 granularity = 0;
    qint32 maxMz = 0;
    qint32 maxIonCount = 0;
    quint8 filter = 0;
    quint8 preGuavaCompatible = 0;
    stream >> granularity >> maxMz >> maxIonCount >> filter >> preGuavaCompatible;
    if (stream.status() == QDataStream::Ok) {
        settings = {granularity,
                    maxMz,
                    maxIonCount,
                    static_cast<PeakPickingFilter>(filter),
                    preGuavaCompatible != 0};
    }
    return stream;
}

QString stringify(const TurboXicSettings& settings, const StringifierState& state)
{
    QString text;
    QTextStream stream(&text);
    const QString lineStart = QLatin1Char('\n') + state.newLinePrefix();
    stream << lineStart << "granularity:" << settings.granularity;
    stream << lineStart << "maxMz:" << settings.maxMz;
    stream << lineStart << "maxIonCount:" << settings.maxIonCount;
    stream << lineStart << "peakPickingFilter:" << filterText(settings.peakPickingFilter);
    stream << lineStart
           << "preGuavaCompatible:" << (settings.preGuavaCompatible ? "true" : "false");
    return text;
}

} // namespace zel
