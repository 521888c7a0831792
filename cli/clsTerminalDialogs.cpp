#include "cli/clsTerminalDialogs.h"

#include "cli/clsTerminalWindow.h"

#include <QDir>
#include <QFileInfo>
#include <iostream>
#include <string>

namespace {
// The question SendAndRetry asks after six failed attempts.
const QString kReconnectQuestion = QStringLiteral("Unable to communicate with display\r\n");

QString ButtonsText(MsgButtons vButtons)
{
    return vButtons == MsgButtons::YesNo ? QStringLiteral("[Yes/No]") : QStringLiteral("[OK/Cancel]");
}

QString ResultText(MsgResult vResult)
{
    switch (vResult) {
    case MsgResult::OK:
        return QStringLiteral("OK");
    case MsgResult::Cancel:
        return QStringLiteral("Cancel");
    case MsgResult::Yes:
        return QStringLiteral("Yes");
    case MsgResult::No:
        break;
    }
    return QStringLiteral("No");
}

// "title: first line", the further lines of the text indented below it.
QString BoxText(const QString& vsTitle, const QString& vsText)
{
    QString lsText = vsText;
    lsText.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(QLatin1Char('\r'), QLatin1Char('\n'));
    while (lsText.endsWith(QLatin1Char('\n')))
        lsText.chop(1);
    lsText.replace(QLatin1Char('\n'), QStringLiteral("\n  "));
    return vsTitle + QStringLiteral(": ") + lsText;
}
}

clsTerminalDialogs::clsTerminalDialogs(clsTerminalWindow& rcWindow, clsCliOptions::Answer vAnswer, bool vbInteractive)
    : mcWindow(rcWindow)
    , mAnswer(vAnswer)
    , mbInteractive(vbInteractive)
{
}

MsgResult clsTerminalDialogs::MsgBox(const QString& vsText, MsgButtons vButtons, MsgIcon vIcon, const QString& vsTitle)
{
    (void)vIcon;
    mcBoxes.append({vsTitle, vsText});
    const QString lsBox = BoxText(vsTitle, vsText);
    if (vButtons == MsgButtons::OK) {
        mcWindow.PrintLine(lsBox);
        return MsgResult::OK;
    }
    if (mAnswer != clsCliOptions::Answer::Ask) {
        QString lsWhy;
        const MsgResult lcResult = Answered(vButtons, vsText, lsWhy);
        mcWindow.PrintLine(lsBox + QLatin1Char(' ') + ButtonsText(vButtons) + QLatin1Char(' ') + ResultText(lcResult)
                           + lsWhy);
        return lcResult;
    }
    return Ask(lsBox, vButtons);
}

// The answer of --yes or --no. --yes takes the question after a silent
// display only so often; then it is Cancel, as a user would give up.
MsgResult clsTerminalDialogs::Answered(MsgButtons vButtons, const QString& vsText, QString& rsWhy)
{
    bool lbYes = mAnswer == clsCliOptions::Answer::Yes;
    if (lbYes && vButtons == MsgButtons::OKCancel && vsText.startsWith(kReconnectQuestion)) {
        lbYes = mlReconnectsGiven < mlReconnects;
        if (lbYes) {
            ++mlReconnectsGiven;
        } else {
            rsWhy = QStringLiteral(" (--reconnect %1: no more attempts)").arg(mlReconnects);
            if (mOnGiveUp)
                mOnGiveUp();
        }
    }
    if (vButtons == MsgButtons::YesNo)
        return lbYes ? MsgResult::Yes : MsgResult::No;
    return lbYes ? MsgResult::OK : MsgResult::Cancel;
}

MsgResult clsTerminalDialogs::Ask(const QString& vsQuestion, MsgButtons vButtons)
{
    const QString lsPrompt = vsQuestion + QLatin1Char(' ') + ButtonsText(vButtons) + QLatin1Char(' ');
    for (;;) {
        bool lbGot = false;
        const QString lsReply = mbInteractive ? ReadLine(lsPrompt, lbGot).trimmed().toLower() : QString();
        if (!lbGot) {
            if (!mbInteractive)
                mcWindow.PrintLine(vsQuestion + QLatin1Char(' ') + ButtonsText(vButtons), true, true);
            if (mOnUnanswered)
                mOnUnanswered(QStringLiteral("this question needs an answer: run it on a terminal, or give --yes or --no"));
            return vButtons == MsgButtons::YesNo ? MsgResult::No : MsgResult::Cancel;
        }
        const bool lbYes = lsReply == QLatin1String("y") || lsReply == QLatin1String("yes")
            || lsReply == QLatin1String("o") || lsReply == QLatin1String("ok");
        const bool lbNo = lsReply == QLatin1String("n") || lsReply == QLatin1String("no")
            || lsReply == QLatin1String("c") || lsReply == QLatin1String("cancel");
        if (lbYes)
            return vButtons == MsgButtons::YesNo ? MsgResult::Yes : MsgResult::OK;
        if (lbNo)
            return vButtons == MsgButtons::YesNo ? MsgResult::No : MsgResult::Cancel;
    }
}

QString clsTerminalDialogs::ReadLine(const QString& vsPrompt, bool& rbGot)
{
    mcWindow.PrintLine(vsPrompt, false, true);
    std::string lsLine;
    rbGot = bool(std::getline(std::cin, lsLine));
    if (!rbGot)
        mcWindow.PrintLine(QString(), true, true);
    return QString::fromLocal8Bit(lsLine.c_str());
}

QString clsTerminalDialogs::ShowSave(const QString& vsFilter, const QString& vsFileName, const QString& vsInitDir)
{
    (void)vsFilter;
    (void)vsInitDir;
    QString lsName = msSaveFileName;
    if (lsName.isEmpty() && mbInteractive) {
        bool lbGot = false;
        const QString lsOffer = vsFileName.isEmpty() ? QStringLiteral(" (empty to cancel)")
                                                     : QStringLiteral(" [") + vsFileName + QLatin1Char(']');
        lsName = ReadLine(QStringLiteral("Save As") + lsOffer + QStringLiteral(": "), lbGot).trimmed();
        if (lbGot && lsName.isEmpty())
            lsName = vsFileName;
    }
    if (lsName.isEmpty()) {
        mcWindow.PrintLine(QStringLiteral("Save As: cancelled, nothing saved"));
        return QString();
    }
    lsName = QDir::toNativeSeparators(QFileInfo(lsName).absoluteFilePath());
    mcWindow.PrintLine(QStringLiteral("Save As: ") + lsName);
    return lsName;
}

QString clsTerminalDialogs::ShowOpen(const QString& vsFilter, const QString& vsFileName, const QString& vsInitDir)
{
    (void)vsFilter;
    (void)vsFileName;
    (void)vsInitDir;
    QString lsName;
    lsName.swap(msOpenFileName);
    return lsName;
}
