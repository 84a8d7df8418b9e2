#include "tools/zel/digest/Digest.h"

#include "chemical_model/Residues.h"
#include "dia/diamolecule/digestion/Digestion.h"
#include "dia/diamolecule/options/SernoxTables.h"
#include "tools/io/FastaFile.h"
#include "tools/zel/cli/CommandLine.h"
#include "tools/zel/cli/Messages.h"
#include "tools/zel/digest/CountedModifications.h"

#include <QSet>

#include <algorithm>
#include <array>
#include <utility>

namespace zel::tool {

namespace {

// In the order of SernoxEnzymeNames.
constexpr std::array kShortNames = {
    "trypsin", "lysc", "gluc", "aspn", "lysn", "argc", "nonspecific", "none"};
constexpr qsizetype kNonSpecific = 6;

std::vector<std::string> enzymeNames()
{
    std::vector<std::string> names(kShortNames.begin(), kShortNames.end());
    for (const QString& name : SernoxEnzymeNames) {
        names.push_back(name.toStdString());
    }
    return names;
}

/// Index into the tables of enzymes.
qsizetype enzymeIndex(const std::string& name)
{
    const std::vector<std::string> names = enzymeNames();
    const auto index = std::ranges::find(names, name) - names.begin();
    return index % std::ssize(kShortNames);
}

QList<ModificationRule> rulesOf(const std::vector<std::string>& texts)
{
    QList<ModificationRule> rules;
    for (const std::string& text : texts) {
        rules.append(modificationRule(text));
    }
    return rules;
}

bool hasMasses(const QString& sequence)
{
    return std::ranges::all_of(sequence, [](QChar c) { return chem::residueMass(c) > 0.0; });
}

/// Makes the list of peptides, protein by protein.
class Digester
{
public:
    explicit Digester(const DigestOptions& options)
        : m_options(options)
        , m_enzyme(enzymeIndex(options.enzyme))
        , m_fixed(rulesOf(options.fixed))
        , m_variable(rulesOf(options.variable))
    {}

    void add(const io::FastaRecord& protein)
    {
        QSet<std::pair<qint64, qint64>> places; // the ends of a protein repeat some
        for (const BasicPeptide& part : partsOf(protein.sequence)) {
            const qsizetype length = part.sequence.size();
            if (length < m_options.minLength || length > m_options.maxLength ||
                places.contains({part.start, part.end})) {
                continue;
            }
            places.insert({part.start, part.end});
            if (!hasMasses(part.sequence)) {
                ++m_foreignCount;
            } else if (m_options.everyPlace || !m_seen.contains(part.sequence)) {
                m_seen.insert(part.sequence);
                addForms(protein.name(), part);
            }
        }
    }

    const PeptidesList& peptides() const { return m_peptides; }
    /// Peptides that were left out.
    qsizetype foreignCount() const { return m_foreignCount; }

private:
    QList<BasicPeptide> partsOf(QString sequence) const
    {
        if (sequence.endsWith(QLatin1Char('*'))) { // the stop codon of a translated gene
            sequence.chop(1);
        }
        QList<BasicPeptide> parts;
        if (m_enzyme == kNonSpecific) {
            digestNonSpecific(sequence, m_options.minLength, m_options.maxLength, parts);
        } else {
            digestSequence(sequence,
                           SernoxEnzymeBeforeRules[m_enzyme],
                           SernoxEnzymeAfterRules[m_enzyme],
                           m_options.missedCleavages,
                           m_options.minLength,
                           m_options.maxLength,
                           parts);
        }
        return m_options.proteinEnds ? parts + additionalPeptides(parts) : parts;
    }

    void addForms(const QString& protein, const BasicPeptide& part)
    {
        for (const Modifications& form : modifiedForms(part.sequence, m_fixed, m_variable)) {
            m_peptides.addPeptide({protein,
                                   static_cast<int>(part.proteinLength),
                                   part.sequence,
                                   static_cast<int>(part.start),
                                   static_cast<int>(part.end),
                                   form});
        }
    }

    const DigestOptions& m_options;
    qsizetype m_enzyme;
    QList<ModificationRule> m_fixed;
    QList<ModificationRule> m_variable;
    QSet<QString> m_seen;
    PeptidesList m_peptides;
    qsizetype m_foreignCount = 0;
};

} // namespace

void addDigestOptions(CLI::App& command, DigestOptions& options)
{
    constexpr int longest = 1000;
    constexpr const char* group = "Digestion";
    command.add_option("--enzyme", options.enzyme, "Enzyme, by its short or its full name")
        ->check(isOneOf(enzymeNames()))
        ->capture_default_str()
        ->group(group);
    command.add_option("--missed-cleavages", options.missedCleavages, "Most missed cleavages")
        ->check(isWholeNumber(0, 20))
        ->capture_default_str()
        ->group(group);
    command.add_option("--min-length", options.minLength, "Fewest residues of a peptide")
        ->check(isWholeNumber(1, longest))
        ->capture_default_str()
        ->group(group);
    command.add_option("--max-length", options.maxLength, "Most residues of a peptide")
        ->check(isWholeNumber(1, longest))
        ->capture_default_str()
        ->group(group);
    command
        .add_flag("--protein-ends",
                  options.proteinEnds,
                  "Also peptides that lost the protein's first methionine, or its last 1 to 3 "
                  "residues")
        ->group(group);
    command
        .add_flag("--every-place",
                  options.everyPlace,
                  "List a peptide at each place where it is, not only at the first")
        ->group(group);
    command
        .add_option("--fixed",
                    options.fixed,
                    "Modification of all such residues (n, c: ends of the peptide), such as "
                    "Carbamidomethyl:C:57.021464")
        ->check(isModificationRule(false))
        ->type_name("NAME:SITES:MASS")
        ->group(group);
    command
        .add_option("--variable",
                    options.variable,
                    "Modification that up to MOST such residues may have, such as "
                    "Oxidation:M:15.994915:2")
        ->check(isModificationRule(true))
        ->type_name("NAME:SITES:MASS:MOST")
        ->group(group);
}

void checkDigestOptions(const DigestOptions& options)
{
    if (options.minLength > options.maxLength) {
        throw CLI::ValidationError("--min-length must not be above --max-length");
    }
    if (const QString fault = variableFault(rulesOf(options.variable)); !fault.isEmpty()) {
        throw CLI::ValidationError(fault.toStdString());
    }
}

Result<PeptidesList> digestFasta(const QString& path, const DigestOptions& options)
{
    ZEL_ASSIGN_OR_RETURN(const io::FastaFile file, io::readFasta(path));
    if (const QString repairs = io::fastaRepairs(path, file); !repairs.isEmpty()) {
        tell(repairs);
    }
    Digester digester(options);
    for (const io::FastaRecord& protein : file.records) {
        digester.add(protein);
    }
    if (digester.foreignCount() > 0) {
        tell(QStringLiteral("%1: %2 peptides with letters that stand for no residue are left out")
                 .arg(path)
                 .arg(digester.foreignCount()));
    }
    if (digester.peptides().size() == 0) {
        ZEL_RETURN_ERROR(kBadParameterError,
                         QStringLiteral("FASTA file %1 has %2 proteins but no peptide of %3 to %4 "
                                        "residues")
                             .arg(path)
                             .arg(file.records.size())
                             .arg(options.minLength)
                             .arg(options.maxLength));
    }
    return digester.peptides();
}

} // namespace zel::tool
