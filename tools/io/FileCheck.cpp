#include "tools/io/FileCheck.h"

#include "tools/io/OutputFile.h"

#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <vector>

namespace zel::io {

namespace {

namespace fs = std::filesystem;

bool isStandardOutput(const QString& path)
{
    return path.isEmpty() || path == QLatin1String("-");
}

/// What two paths of one file have in common.
struct Identity
{
    dev_t device = 0;
    ino_t inode = 0;
    fs::path rest; ///< what is not there yet, below the last folder that is

    bool operator==(const Identity&) const = default;
};

/// Nothing for a device, which several may write into.
std::optional<Identity> identityOf(const struct stat& status)
{
    const bool isFile = S_ISREG(status.st_mode) || S_ISDIR(status.st_mode);
    return isFile || S_ISFIFO(status.st_mode)
               ? std::optional(Identity{status.st_dev, status.st_ino, {}})
               : std::nullopt;
}

/// The path with the links at its end followed, even those that lead to nothing yet.
fs::path withoutLinks(fs::path path)
{
    constexpr int maxLinks = 40; // as the kernel's
    std::error_code problem;
    for (int i = 0; i < maxLinks && fs::is_symlink(path, problem); ++i) {
        path = path.parent_path() / fs::read_symlink(path, problem);
    }
    return path;
}

std::optional<Identity> identityOf(const QString& path)
{
    struct stat status = {};
    if (isStandardOutput(path)) {
        return fstat(STDOUT_FILENO, &status) == 0 ? identityOf(status) : std::nullopt;
    }
    fs::path folder = withoutLinks(QFile::encodeName(path).toStdString());
    fs::path rest;
    while (stat(folder.empty() ? "." : folder.c_str(), &status) != 0) {
        if (!folder.has_relative_path()) {
            return std::nullopt;
        }
        rest = folder.filename() / rest;
        folder = folder.parent_path();
    }
    std::optional<Identity> identity = identityOf(status);
    if (identity && !rest.empty()) {
        identity->rest = rest.lexically_normal();
    }
    return identity;
}

/// A path of the command line and what it leads to.
struct NamedFile
{
    explicit NamedFile(const QString& path)
        : name(isStandardOutput(path) ? QStringLiteral("standard output") : path)
        , identity(identityOf(path))
        , isStandard(isStandardOutput(path))
    {}

    bool isSameAs(const NamedFile& other) const
    {
        return (isStandard && other.isStandard) || (identity && identity == other.identity);
    }

    QString name;
    std::optional<Identity> identity;
    bool isStandard;
};

/// Opens and gives up a file of this name.
Error tryOutput(const QString& path)
{
    const QFileInfo info(path);
    const bool isOpenedLater = // opening a pipe twice would end it for its reader
        isStandardOutput(path) || (info.exists() && !info.isFile() && !info.isDir());
    if (!isOpenedLater) {
        ZEL_ASSIGN_OR_RETURN([[maybe_unused]] const auto unused, OutputFile::open(path));
    }
    return kNoError;
}

} // namespace

Error checkFiles(const CommandFiles& files)
{
    Error e;
    const std::vector<NamedFile> inputs(files.inputs.cbegin(), files.inputs.cend());
    std::vector<NamedFile> outputs;
    for (const QString& path : files.outputs) {
        const NamedFile output(path);
        const auto isSame = [&output](const NamedFile& other) { return output.isSameAs(other); };
        const auto input = std::ranges::find_if(inputs, isSame);
        if (input != inputs.end()) {
            ZEL_RETURN_ERROR(kBadParameterError,
                             QStringLiteral("The output %1 would overwrite the input %2")
                                 .arg(output.name, input->name));
        }
        const auto twin = std::ranges::find_if(outputs, isSame);
        if (twin != outputs.end()) {
            ZEL_RETURN_ERROR(
                kBadParameterError,
                QStringLiteral("Two outputs are one file: %1 and %2").arg(twin->name, output.name));
        }
        outputs.push_back(output);
    }
    for (const QString& path : files.outputs) {
        ZEL_RETURN_IF_ERROR(tryOutput(path));
    }
    return e;
}

} // namespace zel::io
