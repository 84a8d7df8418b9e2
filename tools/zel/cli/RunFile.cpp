#include "tools/zel/cli/RunFile.h"

#include "tools/zel/cli/CommandLine.h"
#include "tools/zel/cli/Messages.h"

#include <CLI/CLI.hpp>
#include <QStringList>

namespace zel::tool {

using msreader::Polarity;
using msreader::RunSelection;

namespace {

/// What a mix of scans is of, and the option that chooses; empty when they are of one kind, or the
/// choice is made.
QString mixOf(const msreader::ScanKinds& kinds, const RunSelection& selection, int msLevel)
{
    if (!selection.polarity && kinds.polarities.size() > 1) {
        return QStringLiteral("both polarities; choose one with --polarity");
    }
    if (!selection.compensationVoltage && kinds.compensationVoltages.size() > 1) {
        QStringList voltages;
        for (const double voltage : kinds.compensationVoltages) {
            voltages.append(QString::number(voltage));
        }
        return QStringLiteral("compensation voltages %1 V; choose one with --faims")
            .arg(voltages.join(QLatin1String(", ")));
    }
    // On level 1 a window says no more than which range of m/z was scanned.
    if (msLevel > 1 && !selection.isolationMz && kinds.isolationWindows.size() > 1) {
        return QStringLiteral("%1 isolation windows, from m/z %2 to %3; choose the one around an "
                              "m/z with --isolation")
            .arg(kinds.isolationWindows.size())
            .arg(kinds.isolationWindows.constFirst().isolationMz)
            .arg(kinds.isolationWindows.constLast().isolationMz);
    }
    return {};
}

} // namespace

void addRunSelection(CLI::App& command, RunSelection& selection)
{
    command
        .add_option_function<std::string>(
            "--polarity",
            [&selection](const std::string& text) {
                selection.polarity = text == "positive" ? Polarity::Positive : Polarity::Negative;
            },
            "Take the scans of this polarity only; needed where a run has both")
        ->check(isOneOf({"positive", "negative"}));
    command
        .add_option("--faims",
                    selection.compensationVoltage,
                    "Take the scans of this FAIMS compensation voltage only, V; needed where a "
                    "run has several")
        ->type_name("NUMBER")
        ->check(isNumber());
}

void addIsolationSelection(CLI::App& command, RunSelection& selection)
{
    command
        .add_option("--isolation",
                    selection.isolationMz,
                    "Take the fragment scans of the isolation window around this m/z only; needed "
                    "where the level has several windows")
        ->type_name("NUMBER")
        ->check(isNumber({.lowest = SettingLimits::kAboveZero}));
}

Result<RunFile> openRun(const QString& path, const RunSelection& selection)
{
    ZEL_ASSIGN_OR_RETURN(const auto run, msreader::MzmlDataSource::open(path, selection));
    for (const QString& warning : run->warnings()) {
        tell(warning);
    }
    return run;
}

Result<RunFile> openRunOfOneKind(const QString& path, const RunSelection& selection, int msLevel)
{
    Error e;
    ZEL_ASSIGN_OR_RETURN(const RunFile run, openRun(path, selection));
    ZEL_RETURN_IF_ERROR(checkHasMsLevel(run.get(), path, msLevel));
    const QString mix = mixOf(run->scanKinds(msLevel), selection, msLevel);
    if (!mix.isEmpty()) {
        ZEL_RETURN_ERROR(kBadParameterError,
                         QStringLiteral("%1 mixes, on MS level %2, %3")
                             .arg(path, QString::number(msLevel), mix));
    }
    return run;
}

} // namespace zel::tool
