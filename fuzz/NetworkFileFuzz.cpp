// Any bytes as a network file: an error, or networks that give finite answers. The bytes are tried
// as they are, and once more with a checksum that fits.

#include "common/core_mini/src/algo/networks/NetworkFile_p.h"

#include <QCryptographicHash>

#include <cstddef>
#include <cstdint>

namespace {

void tryFile(const QByteArray& content)
{
    const auto networks = zel::networkfile::parse(content);
    if (!networks.isOk()) {
        return;
    }
    for (const auto& network : networks.value()) {
        const Eigen::MatrixXf outputs =
            network->evaluate(Eigen::MatrixXf::Zero(network->inputSize(), 1));
        if (outputs.rows() != network->outputSize()) {
            __builtin_trap();
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray content(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    tryFile(content);
    tryFile(content + QCryptographicHash::hash(content, QCryptographicHash::Sha256));
    return 0;
}
