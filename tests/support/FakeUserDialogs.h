#pragma once

#include "platform/IUserDialogs.h"

#include <QList>
#include <QQueue>
#include <QString>

// Answers message boxes and file dialogs from a script and records every box.
class FakeUserDialogs : public IUserDialogs
{
public:
    struct Box {
        QString text;
        QString title;
        MsgButtons buttons;
        MsgIcon icon;
        MsgResult answer;
    };

    MsgResult MsgBox(const QString& vsText, MsgButtons vButtons, MsgIcon vIcon, const QString& vsTitle) override;
    QString ShowSave(const QString& vsFilter, const QString& vsFileName, const QString& vsInitDir) override;
    QString ShowOpen(const QString& vsFilter, const QString& vsFileName, const QString& vsInitDir) override;
    // The port dialog answers from portChoices (empty: cancelled) and records what it was shown.
    bool SelectComPort(QString& rsPort) override
    {
        portsShown << rsPort;
        if (portChoices.isEmpty())
            return false;
        rsPort = portChoices.dequeue();
        return true;
    }

    // Answers in order; with the queue empty, OK-only boxes answer OK and any
    // other box fails the test and answers Cancel.
    QQueue<MsgResult> answers;
    // File names the dialogs return in order; empty queue means cancel.
    QQueue<QString> fileNames;
    QList<Box> boxes;
    QQueue<QString> portChoices;
    QStringList portsShown;
    QStringList dialogFilters;
    QStringList dialogInitialNames;
    QStringList dialogInitDirs;
};
