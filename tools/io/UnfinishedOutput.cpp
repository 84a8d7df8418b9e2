#include "tools/io/UnfinishedOutput.h"

#include <algorithm>
#include <cctype>
#include <mutex>
#include <string>
#include <system_error>
#include <vector>

namespace zel::io {

namespace fs = std::filesystem;

namespace {

/// The marks that are set, with their lock. Never destroyed, as the program may be ended at any
/// time.
struct Marks
{
    std::mutex mutex;
    std::vector<const UnfinishedOutput*> outputs;
};

Marks& marks()
{
    static auto* const all = new Marks;
    return *all;
}

/// Whether `candidate` is named as QSaveFile names what becomes `path`: with six letters added.
bool isSaveFileOf(const fs::path& path, const std::string& candidate)
{
    constexpr std::size_t letterCount = 6;
    const std::string start = path.string() + '.';
    return candidate.size() == start.size() + letterCount && candidate.starts_with(start) &&
           std::all_of(candidate.end() - letterCount, candidate.end(), [](unsigned char c) {
               return std::isalpha(c) != 0;
           });
}

/// Removes the save file of `path` that this process, and no other, has open.
void removeSaveFileOf(const fs::path& path)
{
    std::error_code problem;
    std::error_code ignored;
    for (fs::directory_iterator descriptor("/proc/self/fd", problem);
         !problem && descriptor != fs::directory_iterator();
         descriptor.increment(problem)) {
        const fs::path target = fs::read_symlink(descriptor->path(), ignored);
        if (isSaveFileOf(path, target.string())) {
            fs::remove(target, ignored);
        }
    }
}

/// Removes a folder into which somebody may still be writing.
void removeFolder(const fs::path& path)
{
    constexpr int maxTries = 100;
    std::error_code ignored;
    for (int i = 0; i < maxTries && fs::exists(path, ignored); ++i) {
        fs::remove_all(path, ignored);
    }
}

} // namespace

UnfinishedOutput::UnfinishedOutput(Kind kind, const QString& path)
    : m_kind(kind)
{
    std::error_code ignored;
    m_path = fs::weakly_canonical(fs::absolute(path.toStdString(), ignored), ignored);
    const std::lock_guard lock(marks().mutex);
    marks().outputs.push_back(this);
}

UnfinishedOutput::~UnfinishedOutput()
{
    const std::lock_guard lock(marks().mutex);
    std::erase(marks().outputs, this);
}

void UnfinishedOutput::remove() const
{
    m_kind == Kind::SaveFile ? removeSaveFileOf(m_path) : removeFolder(m_path);
}

void removeUnfinishedOutputs()
{
    const std::lock_guard lock(marks().mutex);
    for (const UnfinishedOutput* const output : marks().outputs) {
        output->remove();
    }
}

} // namespace zel::io
