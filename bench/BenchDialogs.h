#pragma once

#include "platform/IUserDialogs.h"

#include <cstdio>

// Dialogs for a benchmark run: nobody is there to answer, so every box is
// printed on stderr, an OK box is acknowledged and any question is cancelled.
class BenchDialogs : public IUserDialogs
{
public:
    MsgResult MsgBox(const QString& vsText, MsgButtons vButtons, MsgIcon, const QString& vsTitle) override
    {
        std::fprintf(stderr, "%s: %s\n", qPrintable(vsTitle), qPrintable(vsText));
        return vButtons == MsgButtons::OK ? MsgResult::OK : MsgResult::Cancel;
    }
    QString ShowSave(const QString&, const QString&, const QString&) override { return {}; }
    QString ShowOpen(const QString&, const QString&, const QString&) override { return {}; }
};
