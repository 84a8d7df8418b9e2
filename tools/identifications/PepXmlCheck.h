#pragma once

#include "common/stable/Error.h"

class QIODevice;

namespace zel::identifications {

/// Checks what libpwiz takes for granted of a pepXML file, which it would otherwise not survive or
/// get wrong: well-formed XML, elements inside those that they belong to, a search summary before
/// the first spectrum, modifications inside their peptides, and one run, since it takes the matches
/// of all runs for matches of the first.
/// \param file  read from where it stands to its end
/// \return kFileFormatError saying what is wrong, without the file's name
Error checkPepXml(QIODevice* file);

} // namespace zel::identifications
