// What is made from the descriptions of settings.

#include "common/core_mini/src/algo/parameters/FeatureFinderSettingTable.h"
#include "ms_feature/alignment/Ms1FeatureAlignSettingTable.h"
#include "ms_feature/records/MsFeatureFinderSettingTable.h"
#include "tests/tool/ZelTool.h"
#include "tools/simulate/SimulationSettingTable.h"

#include <QSet>

namespace zel::test {

namespace {

/// Each default lies within its limits and survives text; no number takes NaN.
template <typename Record>
void checkTable(const SettingTable<Record>& table)
{
    QSet<QString> names;
    for (const Setting<Record>& setting : table.settings) {
        names.insert(text(setting.name));
        const SettingValue value = settingValue(setting, Record());
        EXPECT_TRUE(isWithin(value, setting.limits)) << setting.name;
        Record copy;
        EXPECT_THAT(setSettingFromText(setting, settingText(value, setting.limits), &copy), IsOk());
        EXPECT_EQ(settingValue(setting, copy), value) << setting.name;
        if (std::holds_alternative<double>(value)) {
            EXPECT_THAT(setSettingFromText(setting, text("nan"), &copy),
                        HasError(kBadParameterError))
                << setting.name;
        }
        EXPECT_EQ(setting.readBy >> table.readers.size(), 0U) << setting.name;
    }
    EXPECT_EQ(names.size(), static_cast<qsizetype>(table.settings.size()));
}

using SettingTablesTest = ZelTool;

} // namespace

TEST_F(SettingTablesTest, TakeTheirOwnDefaults)
{
    checkTable(featureFinderSettings());
    checkTable(msFeatureFinderSettings());
    checkTable(ms1FeatureAlignSettings());
    checkTable(simulate::simulationSettings());
}

TEST_F(SettingTablesTest, AreThoseOfTheDocuments)
{
    QFile page(text(ZEL_DOCS "/settings.md"));
    ASSERT_TRUE(page.open(QIODevice::ReadOnly));
    EXPECT_EQ(zel({text("manual"), text("settings")}).output, QString::fromUtf8(page.readAll()))
        << "write docs/settings.md again: zel manual settings -o docs/settings.md";
}

TEST_F(SettingTablesTest, AreCompletedByTheShell)
{
    const QString script = path(text("zel.bash"));
    ASSERT_EQ(zel({text("manual"), text("bash"), text("-o"), script}).exitCode, 0);
    const auto completions = [&script](const char* line) {
        QProcess bash;
        bash.start(text("bash"),
                   {text("-c"),
                    text("source \"$0\"; compopt() { :; }; COMP_WORDS=($1 \"$2\"); "
                         "COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _zel; echo ${COMPREPLY[*]}"),
                    script,
                    text(line).section(QLatin1Char(' '), 0, -2),
                    text(line).section(QLatin1Char(' '), -1)});
        EXPECT_TRUE(bash.waitForFinished());
        return QString::fromUtf8(bash.readAllStandardOutput()).trimmed().toStdString();
    };
    EXPECT_EQ(completions("zel feat"), "features");
    EXPECT_EQ(completions("zel xic --isot"), "--isotopes --isotope-share");
    EXPECT_EQ(completions("zel features run.mzML --preset "), "auto orbitrap qtof tims");
}

} // namespace zel::test
