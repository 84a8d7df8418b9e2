#pragma once

#include "tests/support/Matchers.h"
#include "tools/sources/mzml/MzmlWriter.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <csignal>

namespace zel::test {

struct Outcome
{
    int exitCode = -1;
    QString output;
    QString errors;
};

inline QString text(const char* latin1)
{
    return QString::fromLatin1(latin1);
}

/// Runs a program to its end, in this folder if one is named.
inline Outcome run(const QString& program, const QStringList& arguments, const QString& folder = {})
{
    QProcess process;
    process.setWorkingDirectory(folder);
    process.start(program, arguments);
    if (!process.waitForFinished(60'000) || process.exitStatus() != QProcess::NormalExit) {
        return {-1, {}, text("the tool did not end by itself")};
    }
    return {process.exitCode(),
            QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

inline Outcome zel(const QStringList& arguments, const QString& folder = {})
{
    return run(text(ZEL_TOOL_PATH), arguments, folder);
}

/// A line that the tool must refuse.
struct BadCall
{
    const char* line;
    const char* errorPart; ///< must stand in the error line
    int exitCode = 1;
    const char* file = nullptr; ///< is there during the call
    QByteArray content = {};
};

/// A folder for the files of a test.
class ZelTool : public ::testing::Test
{
protected:
    ZelTool() { std::signal(SIGINT, SIG_DFL); } // which a shell's job in the background ignores

    QString path(const QString& name) const { return m_folder.filePath(name); }

    /// Runs the tool in the folder on the words of a line.
    Outcome call(const QString& line) const
    {
        return zel(line.split(QLatin1Char(' '), Qt::SkipEmptyParts), m_folder.path());
    }
    Outcome call(const char* line) const { return call(text(line)); }

    QString write(const QString& name, const QByteArray& content) const
    {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
        return path(name);
    }

    QByteArray read(const QString& name) const
    {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
        return file.readAll();
    }

    QString writeRun(const QString& name, const QList<msreader::InMemoryScan>& scans) const
    {
        EXPECT_THAT(msreader::writeMzml(path(name), scans), IsOk());
        return path(name);
    }

    /// The files that are there, hidden ones too.
    QStringList files() const
    {
        return QDir(m_folder.path()).entryList(QDir::Files | QDir::Hidden);
    }

    /// Expects the code, one clear line, and no file more or less.
    void expectRefused(const BadCall& bad) const
    {
        SCOPED_TRACE(bad.line);
        if (bad.file != nullptr) {
            write(text(bad.file), bad.content);
        }
        const QStringList before = files();
        const Outcome outcome = call(bad.line);
        EXPECT_EQ(outcome.exitCode, bad.exitCode) << outcome.errors.toStdString();
        EXPECT_TRUE(outcome.errors.startsWith(text("zel: "))) << outcome.errors.toStdString();
        EXPECT_TRUE(outcome.errors.contains(text(bad.errorPart))) << outcome.errors.toStdString();
        EXPECT_EQ(outcome.errors.trimmed().count(QLatin1Char('\n')), 0)
            << outcome.errors.toStdString();
        EXPECT_TRUE(outcome.output.isEmpty());
        EXPECT_EQ(files(), before) << "files were left behind";
        if (bad.file != nullptr) {
            QFile::remove(path(text(bad.file)));
        }
    }

    QTemporaryDir m_folder;
};

} // namespace zel::test
