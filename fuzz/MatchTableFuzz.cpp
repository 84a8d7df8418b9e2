// Any bytes, gzip included, as a table of spectrum matches: an error, or matches that can be used.

#include "fuzz/FuzzFile.h"
#include "tools/identifications/SpectrumMatchReaders.h"
#include "tools/io/InputFile.h"

#include <cmath>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const FuzzFile file(data, size);
    const auto input = zel::io::InputFile::open(file.path());
    if (!input.isOk()) {
        return 0;
    }
    zel::identifications::MatchReport report;
    const auto matches = zel::identifications::readMatchTable(*input.value(), {}, &report);
    if (!matches.isOk()) {
        return 0;
    }
    for (const zel::identifications::SpectrumMatch& match : matches.value().matches) {
        if (match.sequence.isEmpty() || match.charge < 1 || match.charge > 100 ||
            !(match.mz > 0.0) || !std::isfinite(match.mz) || !match.rtMinutes ||
            !std::isfinite(*match.rtMinutes)) {
            std::abort();
        }
    }
    return 0;
}
