#pragma once

#include "cli/clsCliOptions.h"
#include "platform/IUserDialogs.h"

#include <QList>
#include <functional>

class clsTerminalWindow;

// Message boxes and file dialogs on a terminal. A box is printed as it would
// show (title and text) with the answer it got: --yes/--no, else the user's
// on an interactive terminal. Without either, the first question stops the run.
class clsTerminalDialogs : public IUserDialogs
{
public:
    struct Box {
        QString title;
        QString text;
    };

    clsTerminalDialogs(clsTerminalWindow& rcWindow, clsCliOptions::Answer vAnswer, bool vbInteractive);

    MsgResult MsgBox(const QString& vsText, MsgButtons vButtons, MsgIcon vIcon, const QString& vsTitle) override;
    QString ShowSave(const QString& vsFilter, const QString& vsFileName, const QString& vsInitDir) override;
    // Every file the command line reads is named on the command line: the open
    // dialog gives back the name set for it, once, and is cancelled otherwise.
    QString ShowOpen(const QString& vsFilter, const QString& vsFileName, const QString& vsInitDir) override;
    void SetOpenFileName(const QString& vsFileName) { msOpenFileName = vsFileName; }

    // How often --yes answers OK to the question after a silent display
    // before it answers Cancel: a display that is gone stays gone.
    void SetReconnects(int vlReconnects) { mlReconnects = vlReconnects; }
    // Runs when --yes has given up on the display, so that the run ends with
    // this Cancel instead of asking again at every level of the retries.
    void SetOnGiveUp(std::function<void()> vGiveUp) { mOnGiveUp = std::move(vGiveUp); }
    // The name the save dialog gives back (-o); empty means ask, or cancel when nobody can be asked.
    void SetSaveFileName(const QString& vsFileName) { msSaveFileName = vsFileName; }
    // Runs when a question cannot be answered; it is not expected to return.
    void SetOnUnanswered(std::function<void(const QString&)> vStop) { mOnUnanswered = std::move(vStop); }
    const QList<Box>& Boxes() const { return mcBoxes; }

private:
    MsgResult Answered(MsgButtons vButtons, const QString& vsText, QString& rsWhy);
    MsgResult Ask(const QString& vsQuestion, MsgButtons vButtons);
    QString ReadLine(const QString& vsPrompt, bool& rbGot);

    clsTerminalWindow& mcWindow;
    clsCliOptions::Answer mAnswer;
    bool mbInteractive;
    int mlReconnects = 2;
    int mlReconnectsGiven = 0;
    QString msSaveFileName;
    QString msOpenFileName;
    std::function<void(const QString&)> mOnUnanswered;
    std::function<void()> mOnGiveUp;
    QList<Box> mcBoxes;
};
