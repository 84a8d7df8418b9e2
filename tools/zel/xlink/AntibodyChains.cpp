#include "tools/zel/xlink/AntibodyChains.h"

#include "chemical_model/Residues.h"
#include "tools/zel/cli/Messages.h"

#include <algorithm>

namespace zel::tool {

namespace {

// Heavy chains have about 450 residues, light ones 215.
constexpr qsizetype kLeastHeavyLength = 300;
// Pairs within the chain, and the one that links it to the other kind.
constexpr qsizetype kHeavyCysteines = 9;
constexpr qsizetype kLightCysteines = 5;

Error checkCount(qsizetype count, const char* kind)
{
    if (count == 1 || count == 2) {
        return kNoError;
    }
    return {kBadParameterError,
            QStringLiteral("one or two %1 chains are wanted, but there are %2")
                .arg(QLatin1String(kind))
                .arg(count)};
}

Error checkResidues(const AntibodyChain& chain)
{
    const auto foreign =
        std::ranges::find_if(chain.sequence, [](QChar c) { return !(chem::residueMass(c) > 0.0); });
    if (foreign == chain.sequence.end()) {
        return kNoError;
    }
    return {kBadParameterError,
            QStringLiteral("%1 chain: \"%2\" at position %3 is no residue")
                .arg(chain.label, QString(*foreign))
                .arg(foreign - chain.sequence.begin() + 1)};
}

AntibodyChain chainOf(const io::FastaRecord& record, bool isHeavy, int number)
{
    AntibodyChain chain{{}, record.name(), record.sequence.toUpper(), isHeavy};
    chain.label =
        QStringLiteral("%1 %2").arg(QLatin1String(isHeavy ? "heavy" : "light")).arg(number);
    chain.sequence.removeIf([](QChar c) { return c.isSpace(); });
    return chain;
}

bool isHeavyChain(const io::FastaRecord& record)
{
    if (record.header.contains(QLatin1String("heavy"), Qt::CaseInsensitive)) {
        return true;
    }
    return !record.header.contains(QLatin1String("light"), Qt::CaseInsensitive) &&
           record.sequence.size() >= kLeastHeavyLength;
}

} // namespace

Result<AntibodyChains> antibodyChains(QList<io::FastaRecord> heavy, QList<io::FastaRecord> light)
{
    Error e;
    ZEL_RETURN_IF_ERROR(checkCount(heavy.size(), "heavy"));
    ZEL_RETURN_IF_ERROR(checkCount(light.size(), "light"));
    AntibodyChains chains = {chainOf(heavy.front(), true, 1),
                             chainOf(heavy.back(), true, 2),
                             chainOf(light.front(), false, 1),
                             chainOf(light.back(), false, 2)};
    for (const AntibodyChain& chain : chains) {
        ZEL_RETURN_IF_ERROR(checkResidues(chain));
    }
    return chains;
}

Result<AntibodyChains> antibodyChainsOfFasta(const QString& path)
{
    ZEL_ASSIGN_OR_RETURN(const io::FastaFile file, io::readFasta(path));
    if (const QString repairs = io::fastaRepairs(path, file); !repairs.isEmpty()) {
        tell(repairs);
    }
    QList<io::FastaRecord> heavy;
    QList<io::FastaRecord> light;
    for (const io::FastaRecord& record : file.records) {
        (isHeavyChain(record) ? heavy : light).append(record);
    }
    return antibodyChains(heavy, light);
}

void tellOfFewCysteines(const AntibodyChains& chains)
{
    for (const AntibodyChain& chain : chains) {
        const qsizetype needed = chain.isHeavy ? kHeavyCysteines : kLightCysteines;
        const qsizetype count = chain.sequence.count(QLatin1Char('C'));
        if (count < needed) {
            tell(QStringLiteral("%1 chain has %2 cysteines, where the pattern needs %3; its links "
                                "are not to be trusted")
                     .arg(chain.label)
                     .arg(count)
                     .arg(needed));
        }
    }
}

} // namespace zel::tool
