#include "tools/identifications/SpectrumMatchFile.h"

#include "tools/identifications/SpectrumMatchReaders.h"
#include "tools/io/UncompressedFile.h"

namespace zel::identifications {

Result<SpectrumMatchFile> readSpectrumMatches(const QString& path,
                                              const QString& scoreName,
                                              MatchReport* report)
{
    constexpr qint64 headSize = 1 << 14;
    ZEL_ASSIGN_OR_RETURN(const auto file, msreader::openUncompressed(path));
    const QByteArray head = file->read(headSize);
    if (head.contains("<MzIdentML")) {
        return readIdentData(path, IdentFormat::MzIdentMl, scoreName, report);
    }
    if (head.contains("<msms_pipeline_analysis")) {
        return readIdentData(path, IdentFormat::PepXml, scoreName, report);
    }
    if (head.trimmed().startsWith('<')) {
        ZEL_RETURN_ERROR(kFileFormatError,
                         QStringLiteral("%1 is XML, but neither mzIdentML nor pepXML").arg(path));
    }
    return readMatchTable(path, scoreName, report);
}

} // namespace zel::identifications
