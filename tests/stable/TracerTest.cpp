#include "common/stable/Tracer.h"

#include <QCoreApplication>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <cstdlib>

namespace zel {

namespace {

void unwantedWork()
{
    ZEL_TRACE_SCOPE(u"OTHER", "other", "unwanted");
}

void wantedWork()
{
    ZEL_TRACE_SCOPE(u"WANTED", "wanted", "wanted work");
    unwantedWork();
}

} // namespace

// Tracing is decided once per process, so the traced part runs in a second one: this same test,
// which finds itself traced.
TEST(TracerTest, RecordsTheScopesOfTheCategoriesThatAreSwitchedOn)
{
    wantedWork();
    if (Tracer::isInitialized()) {
        wantedWork();
        return;
    }

    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("trace.json"));
    // The environment of the second process, not of this one.
    const QString command = QStringLiteral("ZEL_TRACE_FILE='%1' ZEL_TRACE_CATEGORIES=WANTED,UNUSED "
                                           "'%2' --gtest_filter='TracerTest.*'")
                                .arg(path, QCoreApplication::applicationFilePath());
    ASSERT_EQ(std::system(qPrintable(command)), 0);

    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    // A viewer adds the missing end of the array in the same way.
    const QJsonArray events = QJsonDocument::fromJson(file.readAll() + "{}]").array();
    ASSERT_EQ(events.size(), 3) << "two scopes, and the end that the reader adds";
    for (int i = 0; i < 2; ++i) {
        const QJsonObject event = events[i].toObject();
        EXPECT_EQ(event.value(QStringLiteral("name")).toString(), QStringLiteral("wanted work"));
        EXPECT_EQ(event.value(QStringLiteral("ph")).toString(), QStringLiteral("X"));
        EXPECT_GE(event.value(QStringLiteral("dur")).toDouble(-1), 0.0);
    }
}

} // namespace zel
