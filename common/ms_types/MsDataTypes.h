#pragma once

#include "common/stable/Export.h"

#include <QObject>

#include <cstdint>

namespace zel::msreader {

/// The enumerations of the spectral data family, known to Qt's meta-object system, so that a value
/// can be turned into its key text.
namespace ZEL_QEnumsMsDataTypes {

Q_NAMESPACE_EXPORT(Q_DECL_EXPORT)

/// In which form a spectrum is wanted. The numbers are stored in files: do not change them.
enum class PeakPickingFilter : std::uint8_t {
    Profile = 0,  ///< as acquired; centroids when the file holds nothing else
    Centroid = 1, ///< one point a peak
};
Q_ENUM_NS(PeakPickingFilter)

} // namespace ZEL_QEnumsMsDataTypes

using ZEL_QEnumsMsDataTypes::PeakPickingFilter;

} // namespace zel::msreader
