#pragma once

#include <QString>

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

/// The input of a fuzz target as a file with a path, in memory.
class FuzzFile
{
public:
    FuzzFile(const std::uint8_t* data, std::size_t size)
        : m_descriptor(memfd_create("input", 0))
    {
        if (m_descriptor < 0 || write(m_descriptor, data, size) != static_cast<ssize_t>(size)) {
            std::abort();
        }
    }
    ~FuzzFile() { close(m_descriptor); }
    FuzzFile(const FuzzFile&) = delete;
    FuzzFile& operator=(const FuzzFile&) = delete;

    QString path() const { return QStringLiteral("/proc/self/fd/%1").arg(m_descriptor); }

private:
    int m_descriptor;
};
