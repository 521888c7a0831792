#pragma once

#include "platform/IUserDialogs.h"

#include <QList>
#include <QQueue>
#include <QString>
#include <QTest>
#include <cstdio>

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

    // Answers in order; with the queue empty, OK-only boxes answer OK and any
    // other box fails the test and answers Cancel. Outside a test (a
    // benchmark) nobody answers: the box is printed and a question cancelled.
    MsgResult MsgBox(const QString& vsText, MsgButtons vButtons, MsgIcon vIcon, const QString& vsTitle) override
    {
        MsgResult lcAnswer = MsgResult::OK;
        if (!answers.isEmpty()) {
            lcAnswer = answers.dequeue();
        } else if (vButtons != MsgButtons::OK) {
            lcAnswer = MsgResult::Cancel;
            if (QTest::currentTestFunction())
                QTest::qFail(qPrintable(QStringLiteral("unscripted question: ") + vsText), __FILE__, __LINE__);
        }
        if (!QTest::currentTestFunction())
            std::fprintf(stderr, "%s: %s\n", qPrintable(vsTitle), qPrintable(vsText));
        boxes.append(Box{vsText, vsTitle, vButtons, vIcon, lcAnswer});
        return lcAnswer;
    }
    QString ShowSave(const QString& vsFilter, const QString& vsFileName, const QString& vsInitDir) override
    {
        dialogFilters << vsFilter;
        dialogInitialNames << vsFileName;
        dialogInitDirs << vsInitDir;
        return fileNames.isEmpty() ? QString() : fileNames.dequeue();
    }
    QString ShowOpen(const QString& vsFilter, const QString& vsFileName, const QString& vsInitDir) override
    {
        return ShowSave(vsFilter, vsFileName, vsInitDir);
    }
    // The port dialog answers from portChoices (empty: cancelled) and records what it was shown.
    bool SelectComPort(QString& rsPort) override
    {
        portsShown << rsPort;
        if (portChoices.isEmpty())
            return false;
        rsPort = portChoices.dequeue();
        return true;
    }

    // Every box as "title: text", to compare all a test showed at once; with
    // vbKind its buttons and icon follow: "title: text [YesNo Question]".
    QStringList Shown(bool vbKind = false) const
    {
        static const char* const kButtons[] = {"OK", "OKCancel", "YesNo"};
        static const char* const kIcons[] = {"None", "Critical", "Question", "Exclamation", "Information"};
        QStringList lcShown;
        for (const Box& lcBox : boxes)
            lcShown << lcBox.title + QStringLiteral(": ") + lcBox.text
                           + (vbKind ? QStringLiteral(" [%1 %2]").arg(kButtons[int(lcBox.buttons)], kIcons[int(lcBox.icon)])
                                     : QString());
        return lcShown;
    }

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
