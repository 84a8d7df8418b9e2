#include "common/stable/Logging.h"
#include "feature_finder/records/CsvFile_p.h"

#include <QFile>
#include <QTextStream>

namespace zel {

void writeCsvFile(const QString& path, const std::function<void(QTextStream&)>& write)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        qCWarning(algoLog) << "Cannot open CSV file:" << path << file.errorString();
        return;
    }
    QTextStream stream(&file);
    write(stream);
    stream.flush();
    if (stream.status() != QTextStream::Ok || !file.flush()) {
        qCWarning(algoLog) << "Cannot write CSV file:" << path << file.errorString();
        return;
    }
    qCDebug(algoLog) << "Output to CSV Complete";
}

} // namespace zel
