#pragma once

#include <QString>

#include <filesystem>

namespace zel::io {

/// Marks an output that is being written, so that nothing of it stays when the program must be
/// ended in the middle of a call that cannot be stopped (see removeUnfinishedOutputs). Thread-safe.
class UnfinishedOutput
{
public:
    enum class Kind {
        SaveFile,  ///< a file that QSaveFile writes beside the path, and that takes its name at the
                   ///< end
        Temporary, ///< a temporary folder, or a temporary file of this very name
    };

    UnfinishedOutput(Kind kind, const QString& path);
    ~UnfinishedOutput();
    UnfinishedOutput(const UnfinishedOutput&) = delete;
    UnfinishedOutput& operator=(const UnfinishedOutput&) = delete;

private:
    void remove() const;
    friend void removeUnfinishedOutputs();

    Kind m_kind;
    std::filesystem::path m_path; ///< absolute, without symbolic links
};

/// Removes what the marked outputs have on the disk so far; files that stood under their names
/// before stay. To be followed by the end of the process, as their writers may still be at work.
void removeUnfinishedOutputs();

} // namespace zel::io
