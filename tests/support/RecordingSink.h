#pragma once

#include "common/stable/Progress.h"

#include <QString>
#include <QTextStream>

namespace zel::test {

/// A progress sink that writes down what it is told, as "begin 2;title;step;end;".
class RecordingSink : public ProgressBarInterface
{
public:
    bool isCanceled() const override { return canceled || stepsLeft <= 0; }
    void beginPhase(int stepCount) override { calls << "begin " << stepCount << ';'; }
    void setText(const QString& text) override { calls << text << ';'; }
    void stepDone() override
    {
        calls << "step;";
        --stepsLeft;
    }
    void endPhase() override { calls << "end;"; }

    bool canceled = false;
    int stepsLeft = 1'000'000; ///< until it cancels by itself
    QString log;
    QTextStream calls{&log};
};

} // namespace zel::test
