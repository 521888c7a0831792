#include "FakeUserDialogs.h"

#include <QTest>
#include <cstdio>

MsgResult FakeUserDialogs::MsgBox(const QString& vsText, MsgButtons vButtons, MsgIcon vIcon, const QString& vsTitle)
{
    MsgResult lcAnswer = MsgResult::OK;
    if (!answers.isEmpty()) {
        lcAnswer = answers.dequeue();
    } else if (vButtons != MsgButtons::OK) {
        // Outside a test (a benchmark) nobody answers: the question is shown and cancelled.
        lcAnswer = MsgResult::Cancel;
        if (QTest::currentTestFunction())
            QTest::qFail(qPrintable(QStringLiteral("unscripted question: ") + vsText), __FILE__, __LINE__);
    }
    if (!QTest::currentTestFunction())
        std::fprintf(stderr, "%s: %s\n", qPrintable(vsTitle), qPrintable(vsText));
    boxes.append(Box{vsText, vsTitle, vButtons, vIcon, lcAnswer});
    return lcAnswer;
}

QString FakeUserDialogs::ShowSave(const QString& vsFilter, const QString& vsFileName, const QString& vsInitDir)
{
    dialogFilters << vsFilter;
    dialogInitialNames << vsFileName;
    dialogInitDirs << vsInitDir;
    return fileNames.isEmpty() ? QString() : fileNames.dequeue();
}

QString FakeUserDialogs::ShowOpen(const QString& vsFilter, const QString& vsFileName, const QString& vsInitDir)
{
    return ShowSave(vsFilter, vsFileName, vsInitDir);
}
