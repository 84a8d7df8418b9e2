#include "common/core_mini/src/algo/networks/NetworkFile_p.h"
#include "common/core_mini/src/algo/networks/NetworkInputs_p.h"
#include "common/stable/JsonUtils.h"

#include <QCryptographicHash>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

// Must stand outside any namespace. Names the resource, so that a program that links the archive of
// the library gets it too.
static void initNetworkResource()
{
    Q_INIT_RESOURCE(zel_networks);
}

namespace zel::networkfile {

static_assert(std::endian::native == std::endian::little, "numbers in the file are little-endian");

namespace {

// Stored in files: do not change.
constexpr char kMagic[] = {'Z', 'E', 'L', 'N', 'E', 'T', '\r', '\n'};
constexpr std::uint32_t kVersion = 1;
constexpr qsizetype kChecksumBytes = 32;

/// Far beyond any network of this kind.
constexpr qsizetype kGreatestFileBytes = 64 << 20;
constexpr std::uint32_t kGreatestLayerSize = 1 << 16;

/// Takes bytes from the front of a content.
class Cursor
{
public:
    explicit Cursor(QByteArrayView bytes)
        : m_left(bytes)
    {}

    qsizetype bytesLeft() const { return m_left.size(); }

    /// Copies as many bytes as `target` holds; false, with nothing taken, when there are fewer.
    bool take(void* target, qsizetype byteCount)
    {
        if (byteCount > m_left.size()) {
            return false;
        }
        std::memcpy(target, m_left.data(), static_cast<std::size_t>(byteCount));
        m_left = m_left.sliced(byteCount);
        return true;
    }

    bool take(std::uint32_t* value) { return take(value, sizeof(*value)); }

    QByteArrayView takeView(qsizetype byteCount)
    {
        const QByteArrayView view = m_left.first(byteCount);
        m_left = m_left.sliced(byteCount);
        return view;
    }

private:
    QByteArrayView m_left;
};

Error formatError(const char* what)
{
    return Error(kFileFormatError,
                 QStringLiteral("Invalid network file: %1").arg(QLatin1StringView(what)));
}

/// The header: a JSON object after its length.
Result<QJsonObject> readHeader(Cursor* cursor)
{
    char magic[sizeof(kMagic)];
    std::uint32_t version = 0;
    std::uint32_t headerBytes = 0;
    if (!cursor->take(magic, sizeof(magic)) || std::memcmp(magic, kMagic, sizeof(magic)) != 0) {
        ZEL_RETURN_ERROR(formatError("it does not start as one"));
    }
    if (!cursor->take(&version) || version != kVersion) {
        ZEL_RETURN_ERROR(formatError("its version is not 1"));
    }
    if (!cursor->take(&headerBytes) || headerBytes > cursor->bytesLeft()) {
        ZEL_RETURN_ERROR(formatError("its header is cut off"));
    }
    const QJsonDocument header =
        QJsonDocument::fromJson(cursor->takeView(headerBytes).toByteArray());
    if (!header.isObject()) {
        ZEL_RETURN_ERROR(formatError("its header is no JSON object"));
    }
    return header.object();
}

Result<DenseNetwork::Layer> readLayer(Cursor* cursor)
{
    std::uint32_t inputs = 0;
    std::uint32_t outputs = 0;
    std::uint32_t activation = 0;
    if (!cursor->take(&inputs) || !cursor->take(&outputs) || !cursor->take(&activation)) {
        ZEL_RETURN_ERROR(formatError("a layer is cut off"));
    }
    const auto isSize = [](std::uint32_t n) { return n >= 1 && n <= kGreatestLayerSize; };
    if (!isSize(inputs) || !isSize(outputs) ||
        activation > static_cast<std::uint32_t>(DenseNetwork::Activation::Relu)) {
        ZEL_RETURN_ERROR(formatError("a layer has no possible size or activation"));
    }
    const qsizetype biasBytes = static_cast<qsizetype>(sizeof(float)) * outputs;
    const qsizetype weightBytes = biasBytes * inputs;
    if (weightBytes + biasBytes > cursor->bytesLeft()) {
        ZEL_RETURN_ERROR(formatError("a layer is larger than the file"));
    }
    DenseNetwork::Layer layer;
    layer.weights.resize(outputs, inputs);
    layer.biases.resize(outputs);
    layer.activation = static_cast<DenseNetwork::Activation>(activation);
    cursor->take(layer.weights.data(), weightBytes);
    cursor->take(layer.biases.data(), biasBytes);
    if (!layer.weights.allFinite() || !layer.biases.allFinite()) {
        ZEL_RETURN_ERROR(formatError("a weight is not finite"));
    }
    return layer;
}

Result<NetworkPointer> readNetwork(Cursor* cursor, int layerCount)
{
    std::vector<DenseNetwork::Layer> layers;
    for (int i = 0; i < layerCount; ++i) {
        ZEL_ASSIGN_OR_RETURN(DenseNetwork::Layer layer, readLayer(cursor));
        if (!layers.empty() && layer.weights.cols() != layers.back().weights.rows()) {
            ZEL_RETURN_ERROR(formatError("a layer does not take what the one before it gives"));
        }
        layers.push_back(std::move(layer));
    }
    if (layers.empty()) {
        ZEL_RETURN_ERROR(formatError("a network has no layer"));
    }
    return NetworkPointer(std::make_shared<const DenseNetwork>(std::move(layers)));
}

bool isIntact(const QByteArray& content)
{
    if (content.size() < kChecksumBytes) {
        return false;
    }
    const QByteArrayView body = QByteArrayView(content).chopped(kChecksumBytes);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    hash.addData(body);
    return QByteArrayView(content).last(kChecksumBytes) == hash.resultView();
}

} // namespace

Result<QMap<QString, NetworkPointer>> parse(const QByteArray& content)
{
    Cursor cursor(QByteArrayView(content).chopped(std::min(kChecksumBytes, content.size())));
    ZEL_ASSIGN_OR_RETURN(const QJsonObject header, readHeader(&cursor));
    if (!isIntact(content)) {
        ZEL_RETURN_ERROR(formatError("its checksum does not fit"));
    }
    ZEL_ASSIGN_OR_RETURN(const QJsonObject fileLayout,
                         JsonUtils::objectValue(header, QStringLiteral("layout")));
    if (fileLayout != networkinputs::layout()) {
        ZEL_RETURN_ERROR(formatError("it was trained for other inputs"));
    }
    ZEL_ASSIGN_OR_RETURN(const QJsonArray list,
                         JsonUtils::arrayValue(header, QStringLiteral("networks")));
    QMap<QString, NetworkPointer> networks;
    for (const auto& entry : list) {
        const QJsonObject description = entry.toObject();
        ZEL_ASSIGN_OR_RETURN(const QString name,
                             JsonUtils::stringValue(description, QStringLiteral("name")));
        ZEL_ASSIGN_OR_RETURN(const int layerCount,
                             JsonUtils::intValue(description, QStringLiteral("layers")));
        ZEL_ASSIGN_OR_RETURN(networks[name], readNetwork(&cursor, layerCount));
    }
    if (cursor.bytesLeft() != 0) {
        ZEL_RETURN_ERROR(formatError("it goes on after its networks"));
    }
    return networks;
}

Result<NetworkPointer> load(const QString& path,
                            const QString& name,
                            Eigen::Index inputSize,
                            Eigen::Index outputSize)
{
    initNetworkResource();
    if (path.isEmpty()) {
        ZEL_RETURN_ERROR(kFileOpenError, "No network file is named");
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        ZEL_RETURN_ERROR(kFileOpenError,
                         QStringLiteral("The network file %1 cannot be opened: %2")
                             .arg(path, file.errorString()));
    }
    const QByteArray content = file.read(kGreatestFileBytes + 1);
    if (file.error() != QFileDevice::NoError) {
        ZEL_RETURN_ERROR(
            kFileOpenError,
            QStringLiteral("The network file %1 cannot be read: %2").arg(path, file.errorString()));
    }
    if (content.size() > kGreatestFileBytes) {
        ZEL_RETURN_ERROR(formatError("it is too large"));
    }
    ZEL_ASSIGN_OR_RETURN(const auto networks, parse(content));
    const NetworkPointer network = networks.value(name);
    if (!network || network->inputSize() != inputSize || network->outputSize() != outputSize) {
        ZEL_RETURN_ERROR(
            kFileFormatError,
            QStringLiteral("The network file %1 holds no network \"%2\" of %3 inputs "
                           "and %4 outputs")
                .arg(path, name, QString::number(inputSize), QString::number(outputSize)));
    }
    return network;
}

} // namespace zel::networkfile
