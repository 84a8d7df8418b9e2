// Writes simulated slices for the training of the networks: a length of four bytes, a JSON header
// of that length, then one record for each slice. A record is charge and offset as 16-bit integers
// and the inputs of both networks in half precision; without a cluster, those of the offset network
// are 0.

#include "common/core_mini/src/algo/networks/NetworkInputs_p.h"
#include "tools/training/OraclePeel.h"

#include <QFile>
#include <QJsonDocument>
#include <QStringList>

#include <cstdint>
#include <cstdio>
#include <vector>

namespace {

using zel::training::Example;
namespace networkinputs = zel::networkinputs;

/// Peaks that are taken for nothing on the way, so that the networks meet clusters without their
/// strongest peak too.
constexpr double kFailureShare = 0.03;

bool writeHeader(QFile& file, std::uint64_t seed)
{
    const QByteArray header =
        QJsonDocument(
            QJsonObject{{QStringLiteral("seed"), static_cast<qint64>(seed)},
                        {QStringLiteral("layout"), networkinputs::layout()},
                        {QStringLiteral("chargeInputs"), networkinputs::chargeInputCount()},
                        {QStringLiteral("chargeOutputs"), networkinputs::kChargeOutputs},
                        {QStringLiteral("offsetInputs"), networkinputs::offsetInputCount()},
                        {QStringLiteral("offsetOutputs"), networkinputs::kOffsetOutputs}})
            .toJson(QJsonDocument::Compact);
    const auto size = static_cast<std::uint32_t>(header.size());
    return file.write(reinterpret_cast<const char*>(&size), sizeof(size)) == sizeof(size) &&
           file.write(header) == header.size();
}

bool writeRecord(QFile& file, const Example& example)
{
    const Eigen::VectorXf chargeInputs = networkinputs::chargeInputs(example.slice);
    Eigen::VectorXf offsetInputs = Eigen::VectorXf::Zero(networkinputs::offsetInputCount());
    if (example.charge > 0) {
        offsetInputs = networkinputs::offsetInputs(example.slice, example.mz, example.charge);
    }
    Eigen::Matrix<Eigen::half, Eigen::Dynamic, 1> inputs(chargeInputs.size() + offsetInputs.size());
    inputs << chargeInputs.cast<Eigen::half>(), offsetInputs.cast<Eigen::half>();
    const std::int16_t answers[] = {static_cast<std::int16_t>(example.charge),
                                    static_cast<std::int16_t>(example.offset)};
    const auto inputBytes = static_cast<qint64>(sizeof(Eigen::half)) * inputs.size();
    return file.write(reinterpret_cast<const char*>(answers), sizeof(answers)) == sizeof(answers) &&
           file.write(reinterpret_cast<const char*>(inputs.data()), inputBytes) == inputBytes;
}

bool writePatterns(const QString& path, std::uint64_t seed, std::int64_t exampleCount)
{
    QFile file(path);
    bool written = file.open(QIODevice::WriteOnly) && writeHeader(file, seed);
    std::int64_t count = 0;
    for (std::uint64_t scene = 0; written && count < exampleCount; ++scene) {
        zel::training::peelByTruth(
            zel::training::drawScene(seed, scene), kFailureShare, [&](const Example& example) {
                const bool wanted =
                    count < exampleCount && example.offset < networkinputs::kOffsetOutputs;
                written = written && (!wanted || writeRecord(file, example));
                count += wanted ? 1 : 0;
            });
    }
    return written && file.flush();
}

} // namespace

int main(int argc, char** argv)
{
    bool seedIsNumber = false;
    bool countIsNumber = false;
    const std::uint64_t seed = argc == 4 ? QByteArray(argv[2]).toULongLong(&seedIsNumber) : 0;
    const std::int64_t count = argc == 4 ? QByteArray(argv[3]).toLongLong(&countIsNumber) : 0;
    if (!seedIsNumber || !countIsNumber ||
        !writePatterns(QString::fromLocal8Bit(argv[1]), seed, count)) {
        std::fputs("usage: zel_training_patterns FILE SEED EXAMPLES\n", stderr);
        return 1;
    }
    return 0;
}
