#include "tools/zel/digest/CountedModifications.h"

#include "common/stable/NumberText.h"

#include <QRegularExpression>

#include <algorithm>
#include <cmath>
#include <optional>

namespace zel::tool {

namespace {

constexpr QChar kStart = u'n';
constexpr QChar kEnd = u'c';
constexpr int kMostCopies = 20;
constexpr int kMostForms = 1000; ///< of one peptide, so that memory stays within reason

std::optional<ModificationRule> parsedRule(const std::string& text)
{
    static const QRegularExpression pattern(
        QStringLiteral("^([^:;/]+):([A-Znc]+):([-+0-9.eE]+)(?::([0-9]+))?$"));
    const QRegularExpressionMatch match = pattern.match(QString::fromStdString(text));
    bool isNumber = false;
    ModificationRule rule;
    rule.modification = {match.captured(1), match.captured(2), 0.0, -1};
    rule.modification.mass = match.captured(3).toDouble(&isNumber);
    rule.most = match.captured(4).isEmpty() ? 1 : match.captured(4).toInt();
    const bool isRule = match.hasMatch() && isNumber && std::isfinite(rule.modification.mass);
    return isRule && rule.most >= 1 && rule.most <= kMostCopies ? std::optional(rule)
                                                                : std::nullopt;
}

/// The places of a peptide that any of these letters stands for.
int siteCount(const QString& sequence, const QString& sites)
{
    auto count = std::ranges::count_if(sequence, [&](QChar c) { return sites.contains(c); });
    for (const QChar end : {kStart, kEnd}) {
        count += sites.contains(end) ? 1 : 0;
    }
    return static_cast<int>(count);
}

/// Whether so many copies of each find a site of their own: any of the rules together need no more
/// sites than they have (Hall 1935).
bool haveRoom(const QString& sequence,
              const QList<ModificationRule>& rules,
              const QList<int>& counts)
{
    for (unsigned chosen = 1; chosen < 1U << rules.size(); ++chosen) {
        QString sites;
        int needed = 0;
        for (qsizetype i = 0; i < rules.size(); ++i) {
            if ((chosen >> i & 1U) != 0) {
                sites += rules[i].modification.site;
                needed += counts[i];
            }
        }
        if (needed > siteCount(sequence, sites)) {
            return false;
        }
    }
    return true;
}

/// The next combination of counts, the first rule's changing fastest; false after the last.
bool toNext(const QList<ModificationRule>& rules, QList<int>* counts)
{
    for (qsizetype i = 0; i < rules.size(); ++i) {
        if ((*counts)[i] < rules[i].most) {
            ++(*counts)[i];
            return true;
        }
        (*counts)[i] = 0;
    }
    return false;
}

void addCopies(int count, const Modification& modification, Modifications* modifications)
{
    if (count > 0) {
        modifications->addModificationWithCount({count, modification});
    }
}

} // namespace

CLI::Validator isModificationRule(bool isVariable)
{
    return {[isVariable](std::string& text) -> std::string {
                const auto rule = parsedRule(text);
                const bool hasMost = std::ranges::count(text, ':') > 2;
                return rule && (isVariable || !hasMost)
                           ? std::string()
                           : "expected " +
                                 std::string(isVariable ? "NAME:SITES:MASS:MOST, MOST from 1 to 20"
                                                        : "NAME:SITES:MASS") +
                                 ", but found \"" + text + '"';
            },
            ""};
}

ModificationRule modificationRule(const std::string& text)
{
    return parsedRule(text).value_or(ModificationRule());
}

QString variableFault(const QList<ModificationRule>& variable)
{
    qint64 forms = 1;
    for (const ModificationRule& rule : variable) {
        forms *= rule.most + 1;
        if (forms > kMostForms) {
            return QStringLiteral("--variable gives more than %1 forms of one peptide")
                .arg(kMostForms);
        }
    }
    return {};
}

QList<Modifications> modifiedForms(const QString& sequence,
                                   const QList<ModificationRule>& fixed,
                                   const QList<ModificationRule>& variable)
{
    Modifications always;
    for (const ModificationRule& rule : fixed) {
        addCopies(siteCount(sequence, rule.modification.site), rule.modification, &always);
    }
    QList<Modifications> forms;
    QList<int> counts(variable.size(), 0);
    do {
        if (haveRoom(sequence, variable, counts)) {
            forms.append(always);
            for (qsizetype i = 0; i < variable.size(); ++i) {
                addCopies(counts[i], variable[i].modification, &forms.back());
            }
        }
    } while (toNext(variable, &counts));
    return forms;
}

QByteArray modificationsText(const Modifications& modifications)
{
    QByteArrayList items;
    for (const ModificationWithCount& item : modifications.modifications) {
        const QByteArray times =
            item.count == 1 ? QByteArray() : QByteArray::number(item.count) + 'x';
        items.append(times + item.modification.name.toUtf8() + '@' +
                     item.modification.site.toUtf8() + '/' + roundTripText(item.totalMass()));
    }
    return items.join(';');
}

} // namespace zel::tool
