#include "ms_feature/records/IsotopeSelector.h"

#include <QStringList>

#include <algorithm>

namespace zel {

IsotopeSelector::IsotopeSelector()
    : m_isotopeMasses{1800, 3000, 5000, 8000, 10000, 20000, 40000, 80000}
{}

int IsotopeSelector::isotopeToUse(double mass) const
{
    const auto chosen = std::find_if(m_isotopeMasses.cbegin(),
                                     m_isotopeMasses.cend(),
                                     [mass](double threshold) { return threshold >= mass; });
    return static_cast<int>(chosen - m_isotopeMasses.cbegin());
}

QString IsotopeSelector::toString() const
{
    QStringList texts;
    for (const double mass : m_isotopeMasses) {
        texts.append(QString::number(mass, 'g', 6));
    }
    return texts.join(QStringLiteral(", "));
}

} // namespace zel
