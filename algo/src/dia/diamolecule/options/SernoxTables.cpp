#include "dia/diamolecule/options/SernoxTables.h"

namespace zel {

namespace {

using chem::FragmentType;

/// A choice of enzyme with its rules.
struct Enzyme
{
    QString name;
    CleavageRules after;
    CleavageRules before;
};

CleavageRules rules(const char* residues, bool cuts)
{
    CleavageRules made;
    for (; *residues != '\0'; ++residues) {
        made.insert(QString(QLatin1Char(*residues)), cuts);
    }
    return made;
}

const QList<Enzyme>& enzymes()
{
    static const QList<Enzyme> all = {
        {QStringLiteral("Trypsin @ R,K | C-term"), rules("KR", true), rules("P", false)},
        {QStringLiteral("LysC @ K | C-term"), rules("K", true), rules("P", false)},
        {QStringLiteral("GluC @ D,E | C-term"), rules("DE", true), {}},
        {QStringLiteral("AspN @ D | N-term"), {}, rules("D", true)},
        {QStringLiteral("LysN @ K | N-term"), {}, rules("K", true)},
        {QStringLiteral("ArgC @ R | C-term"), rules("R", true), rules("P", false)},
        {QStringLiteral("Non-specific"), {}, {}},
        {QStringLiteral("None"), {}, {}},
    };
    return all;
}

template <typename Field>
QList<Field> columnOf(Field Enzyme::*field)
{
    QList<Field> column;
    for (const Enzyme& enzyme : enzymes()) {
        column.append(enzyme.*field);
    }
    return column;
}

const QSet<FragmentType> kCollision = {FragmentType::B, FragmentType::Y};
const QSet<FragmentType> kElectronCapture = {FragmentType::C, FragmentType::ZDot};
const QSet<FragmentType> kElectronTransfer = {
    FragmentType::ADot, FragmentType::C, FragmentType::ZDot};
const QSet<FragmentType> kBoth = {
    FragmentType::B, FragmentType::Y, FragmentType::C, FragmentType::ZDot};

} // namespace

const QList<QString> SernoxEnzymeNames = columnOf(&Enzyme::name);
const QList<CleavageRules> SernoxEnzymeAfterRules = columnOf(&Enzyme::after);
const QList<CleavageRules> SernoxEnzymeBeforeRules = columnOf(&Enzyme::before);

const QList<QString> SernoxFragmentationTypeNames = {QStringLiteral("CID low energy"),
                                                     QStringLiteral("TOF-TOF"),
                                                     QStringLiteral("QTOF / HCD"),
                                                     QStringLiteral("ETD"),
                                                     QStringLiteral("ECD"),
                                                     QStringLiteral("EThcD"),
                                                     QStringLiteral("Both: HCD & ETD")};
const QList<QSet<FragmentType>> SernoxFragmentationTypeFragments = {
    kCollision, kCollision, kCollision, kElectronTransfer, kElectronCapture, kBoth, kBoth};

const QList<QString> SernoxProteinFdrNames = {
    QStringLiteral("1% FDR"), QStringLiteral("2% FDR"), QStringLiteral("No cuts")};

} // namespace zel
