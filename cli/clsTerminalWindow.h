#pragma once

#include "cli/clsProgressLine.h"
#include "platform/IMainWindow.h"

#include <QMap>
#include <QObject>
#include <QSet>
#include <QStringList>
#include <cstdio>
#include <functional>

class clsApplication;

// One progress bar of the terminal: plain values, drawn by the window.
class clsTerminalBar : public IProgressBar
{
public:
    bool Visible() const override { return mbVisible; }
    void SetVisible(bool vbVisible) override { mbVisible = vbVisible; }
    int Min() const override { return mlMin; }
    void SetMin(int vlMin) override { mlMin = vlMin; }
    int Max() const override { return mlMax; }
    void SetMax(int vlMax) override { mlMax = vlMax; }
    int Value() const override { return mlValue; }
    void SetValue(int vlValue) override { mlValue = vlValue; }
    // How full the bar is drawn, 0 to 100.
    int Percent() const;

private:
    bool mbVisible = false;
    int mlMin = 0;
    int mlMax = 100;
    int mlValue = 0;
};

// The main window of the command line: the status model becomes one progress
// line on stderr, redrawn in place on a terminal (what, a bar, n of N, bytes a
// second, time left) and written as plain lines otherwise (status text, then
// the big and small bar in per cent); --quiet keeps it silent. Of the grid it
// keeps only whether rows are shown, so that --print writes what the window
// would show.
class clsTerminalWindow : public QObject, public IMainWindow
{
    Q_OBJECT
public:
    clsTerminalWindow(std::FILE* vcOut, bool vbTerminal);

    // Draws whenever the application has copied its status model to the window.
    void Attach(clsApplication& rcApplication);
    // A line of its own (a message box, a log line): the progress line makes room and comes back below it.
    // Under --quiet only what must be seen (a question put to the user) is printed.
    void PrintLine(const QString& vsText, bool vbNewLine = true, bool vbEvenIfQuiet = false);
    void SetQuiet(bool vbQuiet) { mbQuiet = vbQuiet; }
    // The bytes moved on the serial line so far, for the rate on the progress line.
    void SetByteCounter(std::function<quint64()> vCounter) { mByteCounter = std::move(vCounter); }
    // Ends the progress line so that what follows starts on a fresh line.
    void Finish();
    // Rewrites every text before it is shown: file names the user should see instead of the program's own.
    void SetUserNames(std::function<QString(const QString&)> vUserNames) { mUserNames = std::move(vUserNames); }
    // False after ClearGrid until the next RecordsChanged: the grid shows only its header.
    bool ShowsRecords() const { return mbShowsRecords; }
    // The progress line as it stands now.
    QString ProgressText() const;

    void SetStatusLine(const QString& vsText) override { msStatusLine = vsText; }
    IProgressBar& ProgressBar(Bar vBar) override;
    void EnableButtons(bool vbEnabled) override;
    void EnableMenu(bool vbEnabled) override { (void)vbEnabled; }
    void ClearGrid() override { mbShowsRecords = false; }
    void RecordsChanged() override { mbShowsRecords = true; }
    void RecordsCleared() override { mbShowsRecords = false; }
    void AutoSizeTheColumns() override {}
    QString UploadFileText(int vlIndex) const override;
    void SetUploadFileText(int vlIndex, const QString& vsFileName) override;
    void SetMdWarningHighlighted(bool vbHighlighted) override { (void)vbHighlighted; }
    void GiveUpWork() override { Finish(); }

private:
    void Redraw();
    QString LiveLine();
    void Write(const QString& vsText);
    int TerminalWidth() const;

    std::FILE* mcOut;
    bool mbTerminal;
    bool mbQuiet = false;
    std::function<quint64()> mByteCounter;
    clsProgressLine mcLine;
    clsApplication* mcApplication = nullptr;
    QString msStatusLine;
    QString msShown;
    QSet<QString> mcPlainKinds;
    int mlPlainTenth = -1;
    quint32 mlPlainTime = 0;
    clsTerminalBar mcBars[3];
    bool mbShowsRecords = false;
    QMap<int, QString> mcUploadFiles;
    std::function<QString(const QString&)> mUserNames;
};
