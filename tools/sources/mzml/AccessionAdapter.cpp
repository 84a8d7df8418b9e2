#include "tools/sources/mzml/AccessionAdapter.h"

#include "tools/sources/mzml/Fault.h"

#include <QByteArray>
#include <QHash>
#include <pwiz/data/common/cv.hpp>

#include <algorithm>

namespace zel::msreader {

namespace {

/// libpwiz of 2018 knows the first two.
constexpr QByteArrayView kMobilityArrays[] = {"MS:1002477",
                                              "MS:1002816",
                                              "MS:1002893",
                                              "MS:1003006",
                                              "MS:1003007",
                                              "MS:1003008",
                                              "MS:1003153",
                                              "MS:1003154",
                                              "MS:1003155",
                                              "MS:1003156"};

/// A text of the same length.
QByteArray replacementOf(const QByteArray& accession)
{
    if (std::ranges::find(kMobilityArrays, QByteArrayView(accession)) !=
        std::end(kMobilityArrays)) {
        return kMobilityArrayAccession;
    }
    const bool isKnown =
        faultOf([&accession] { pwiz::cv::cvTermInfo(accession.toStdString()); }).isEmpty();
    // libpwiz takes a term of a vocabulary that it does not have for an unknown one, which is no
    // failure.
    return isKnown ? accession : QByteArray(accession).replace(0, 1, "?");
}

} // namespace

AttributeFilter accessionFilter()
{
    const auto adapt = [replacements =
                            QHash<QByteArray, QByteArray>()](std::span<char> accession) mutable {
        const QByteArray key(accession.data(), static_cast<qsizetype>(accession.size()));
        auto known = replacements.constFind(key);
        if (known == replacements.cend()) {
            known = replacements.insert(key, replacementOf(key));
        }
        std::copy(known->cbegin(), known->cend(), accession.begin());
    };
    return {"ccession=", adapt}; // the end of "accession" and "unitAccession"
}

} // namespace zel::msreader
