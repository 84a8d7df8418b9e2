#pragma once

#include "common/core_mini/src/algo/networks/DenseNetwork_p.h"
#include "common/stable/Result.h"

#include <QByteArray>
#include <QMap>
#include <QString>

#include <memory>

namespace zel {

/// Reads the files of trained networks; docs/file-formats.md describes them. What is read is
/// checked against its checksum, so that a damaged file is refused as a whole.
namespace networkfile {

using NetworkPointer = std::shared_ptr<const DenseNetwork>;

/// The networks of a file's content, by name.
/// \return kFileFormatError for what is damaged, no network file, or made for other inputs than
///         those of networkinputs::layout()
Result<QMap<QString, NetworkPointer>> parse(const QByteArray& content);

/// One network of a file.
/// \return kFileOpenError for a file that cannot be opened or read; kFileFormatError as above, and
///         for a file without such a network or with one of other size
Result<NetworkPointer> load(const QString& path,
                            const QString& name,
                            Eigen::Index inputSize,
                            Eigen::Index outputSize);

/// Names of the networks in the file.
inline constexpr char kChargeNetwork[] = "charge";
inline constexpr char kOffsetNetwork[] = "offset";

} // namespace networkfile
} // namespace zel
