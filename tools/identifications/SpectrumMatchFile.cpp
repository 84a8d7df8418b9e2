#include "tools/identifications/SpectrumMatchFile.h"

#include "tools/identifications/SpectrumMatchReaders.h"
#include "tools/io/InputFile.h"

namespace zel::identifications {

Result<SpectrumMatchFile> readSpectrumMatches(const QString& path,
                                              const QString& scoreName,
                                              MatchReport* report)
{
    ZEL_ASSIGN_OR_RETURN(const auto input, io::InputFile::open(path));
    const QByteArray& head = input->head();
    if (head.contains("<MzIdentML")) {
        return readIdentData(*input, IdentFormat::MzIdentMl, scoreName, report);
    }
    if (head.contains("<msms_pipeline_analysis")) {
        return readIdentData(*input, IdentFormat::PepXml, scoreName, report);
    }
    if (head.trimmed().startsWith('<')) {
        ZEL_RETURN_ERROR(kFileFormatError,
                         QStringLiteral("%1 is XML, but neither mzIdentML nor pepXML").arg(path));
    }
    return readMatchTable(*input, scoreName, report);
}

} // namespace zel::identifications
