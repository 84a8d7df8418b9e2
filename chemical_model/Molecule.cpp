#include "chemical_model/Molecule.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace chem {

using zel::kBadParameterError;
using zel::Result;

namespace {

bool isUpper(QChar c)
{
    return c >= u'A' && c <= u'Z';
}
bool isLower(QChar c)
{
    return c >= u'a' && c <= u'z';
}
bool isDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}

/// Walks through a formula, one term of symbol and count after the other.
class FormulaReader
{
public:
    explicit FormulaReader(QStringView text)
        : m_text(text)
    {
        skipBlanks();
    }

    bool atEnd() const { return m_position == m_text.size(); }
    qsizetype position() const { return m_position; }

    /// A capital letter and the small ones after it.
    QStringView readSymbol()
    {
        const qsizetype start = m_position;
        if (!atEnd() && isUpper(m_text[m_position])) {
            ++m_position;
            skipWhile(isLower);
        }
        return m_text.sliced(start, m_position - start);
    }

    /// The count after a symbol, 1 when there is none; nothing when it is malformed or too large.
    std::optional<std::int64_t> readCount()
    {
        std::optional<std::int64_t> count = 1;
        if (take(u'(')) {
            const bool negative = take(u'-');
            if (!negative) {
                take(u'+');
            }
            count = readDigits();
            if (count && negative) {
                count = -*count;
            }
            if (!take(u')')) {
                count.reset();
            }
        } else if (!atEnd() && isDigit(m_text[m_position])) {
            count = readDigits();
        }
        skipBlanks();
        return count;
    }

private:
    template <typename Predicate>
    void skipWhile(Predicate predicate)
    {
        while (!atEnd() && predicate(m_text[m_position])) {
            ++m_position;
        }
    }
    void skipBlanks()
    {
        skipWhile([](QChar c) { return c == u' ' || c == u'\t'; });
    }
    bool take(char16_t expected)
    {
        const bool found = !atEnd() && m_text[m_position] == expected;
        m_position += found ? 1 : 0;
        return found;
    }
    std::optional<std::int64_t> readDigits()
    {
        const qsizetype start = m_position;
        std::int64_t number = 0;
        while (!atEnd() && isDigit(m_text[m_position])) {
            number = 10 * number + (m_text[m_position].unicode() - u'0');
            if (number > Molecule::kMaxAtomCount) {
                return std::nullopt;
            }
            ++m_position;
        }
        return m_position == start ? std::nullopt : std::optional(number);
    }

    QStringView m_text;
    qsizetype m_position = 0;
};

/// What stands at a place of a text, shortened for a message.
QString excerpt(const QString& text, qsizetype position)
{
    constexpr qsizetype maxLength = 20;
    const QString rest = text.mid(position, maxLength);
    return rest.isEmpty() ? QStringLiteral("the end") : QStringLiteral("\"%1\"").arg(rest);
}

} // namespace

Result<Molecule> Molecule::fromFormula(const QString& formula)
{
    FormulaReader reader(formula);
    if (reader.atEnd()) {
        ZEL_RETURN_ERROR(kBadParameterError,
                         "A formula such as C6H12O6 is wanted, but it is empty");
    }
    Molecule molecule;
    while (!reader.atEnd()) {
        const qsizetype symbolPosition = reader.position();
        const std::optional<Element> element = elementOfSymbol(reader.readSymbol());
        if (!element) {
            ZEL_RETURN_ERROR(kBadParameterError,
                             QStringLiteral("A known element is wanted at position %1 of the "
                                            "formula, but there is %2")
                                 .arg(symbolPosition + 1)
                                 .arg(excerpt(formula, symbolPosition)));
        }
        const qsizetype countPosition = reader.position();
        const std::optional<std::int64_t> count = reader.readCount();
        if (!count || std::abs(molecule.count(*element) + *count) > kMaxAtomCount) {
            ZEL_RETURN_ERROR(kBadParameterError,
                             QStringLiteral("A count of at most %1 atoms, such as 2 or (-2), is "
                                            "wanted at position %2 of the formula, but there is %3")
                                 .arg(kMaxAtomCount)
                                 .arg(countPosition + 1)
                                 .arg(excerpt(formula, countPosition)));
        }
        molecule.add(*element, *count);
    }
    return molecule;
}

QString Molecule::formula() const
{
    std::array<Element, kElementCount> order;
    for (std::size_t i = 0; i < kElementCount; ++i) {
        order[i] = static_cast<Element>(i);
    }
    const bool hasCarbon = count(Element::C) != 0;
    const auto rank = [hasCarbon](Element element) {
        const bool first = hasCarbon && (element == Element::C || element == Element::H);
        return first ? static_cast<int>(element) : static_cast<int>(kElementCount);
    };
    std::ranges::sort(order, [&rank](Element a, Element b) {
        return rank(a) != rank(b) ? rank(a) < rank(b)
                                  : std::strcmp(elementInfo(a).symbol, elementInfo(b).symbol) < 0;
    });

    QString text;
    for (const Element element : order) {
        const std::int64_t atoms = count(element);
        if (atoms == 0) {
            continue;
        }
        text += QLatin1StringView(elementInfo(element).symbol);
        if (atoms < 0) {
            text += QStringLiteral("(%1)").arg(atoms);
        } else if (atoms > 1) {
            text += QString::number(atoms);
        }
    }
    return text;
}

} // namespace chem
