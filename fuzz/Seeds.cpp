// Writes valid inputs that are no text into the folders of their fuzz targets, which lie below the
// folder that is given.

#include "common/core_mini/src/algo/networks/NetworkInputs_p.h"
#include "tools/sources/memory/InMemoryDataSource.h"
#include "turbo/index/TurboXic.h"

#include <QDataStream>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

#include <cstdio>

namespace {

bool writeFile(const QString& path, const QByteArray& content)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

bool writeCacheSeed(const QString& path, const QList<QList<QPointF>>& spectra)
{
    QList<zel::msreader::InMemoryScan> scans;
    for (qsizetype i = 0; i < spectra.size(); ++i) {
        zel::msreader::InMemoryScan scan;
        scan.info.scanId = zel::msreader::MsScanId(i + 1);
        scan.info.retentionTimeMinutes = 0.1 * static_cast<double>(i);
        scan.points = spectra[i];
        scans.append(scan);
    }
    zel::TurboXicSettings settings;
    settings.granularity = 100;
    settings.maxMz = 600;
    settings.maxIonCount = 20;
    zel::TurboXic index(settings);
    const auto source = zel::msreader::InMemoryDataSource::create(scans, QStringLiteral("seed"));
    return source.isOk() &&
           !index.init(source.value().get(), QStringLiteral("seed"), {}).hasError() &&
           !index.save(path).hasError();
}

/// A file of one network with two small layers, without its checksum.
QByteArray tinyNetworkFile()
{
    const QByteArray header =
        QJsonDocument(
            QJsonObject{{QStringLiteral("layout"), zel::networkinputs::layout()},
                        {QStringLiteral("networks"),
                         QJsonArray{QJsonObject{{QStringLiteral("name"), QStringLiteral("charge")},
                                                {QStringLiteral("layers"), 2}}}}})
            .toJson(QJsonDocument::Compact);
    QByteArray content = "ZELNET\r\n";
    const auto append = [&content](auto... numbers) {
        (content.append(reinterpret_cast<const char*>(&numbers), sizeof(numbers)), ...);
    };
    append(1U, static_cast<quint32>(header.size()));
    content += header;
    append(2U, 1U, 1U, 0.5F, -1.0F, 0.25F); // two inputs, one output, ReLU; weights and bias
    append(1U, 1U, 0U, 2.0F, 0.0F);
    return content;
}

bool writeSeeds(const QString& folder)
{
    const QList<QPointF> peaks = {{400.0, 3}, {500.0, 7}};
    QByteArray settings;
    QDataStream stream(&settings, QIODevice::WriteOnly);
    stream << zel::TurboXicSettings();
    return writeCacheSeed(folder + QStringLiteral("/turboxiccache/gaps"), {peaks, {}, peaks}) &&
           writeCacheSeed(folder + QStringLiteral("/turboxiccache/last"), {{}, {}, peaks}) &&
           writeFile(folder + QStringLiteral("/turboxicsettings/default"), settings) &&
           writeFile(folder + QStringLiteral("/networkfile/tiny"), tinyNetworkFile());
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2 || !writeSeeds(QString::fromLocal8Bit(argv[1]))) {
        std::fputs("usage: fuzz_seeds FOLDER\n", stderr);
        return 1;
    }
    return 0;
}
