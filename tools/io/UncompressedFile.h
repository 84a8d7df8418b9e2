#pragma once

#include "common/stable/Result.h"

#include <QFile>

#include <memory>

namespace zel::msreader {

/// Opens a file for reading at any place. A gzip file (told by its first bytes, not by its name) is
/// first unpacked into an unnamed temporary file, which goes away with the object: jumping inside a
/// gzip stream means unpacking it again from some earlier point, which costs more than unpacking it
/// once as soon as it is read twice.
/// \return kFileOpenError when a file cannot be opened or the temporary one not be written,
/// kFileFormatError when the file is empty or the gzip stream is damaged or cut off
Result<std::unique_ptr<QFile>> openUncompressed(const QString& path);

} // namespace zel::msreader
