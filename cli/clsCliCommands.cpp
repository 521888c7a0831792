#include "cli/clsCliCommands.h"

#include "app/clsApplication.h"
#include "cli/clsTerminalDialogs.h"
#include "cli/clsTerminalWindow.h"
#include "data/clsHalvexRecord.h"
#include "data/clsRecordCollection.h"
#include "platform/IMainWindow.h"

#include <cstdio>

namespace {
const QString kEraseFailedTitle = QStringLiteral("KVT Upload ERROR");
const QString kEraseFailedText = QStringLiteral("ERROR: Clearing display Failed: ");
const QString kErasedTitle = QStringLiteral("KVT Upload");

void WriteOut(const QString& vsText)
{
    std::fputs(vsText.toLocal8Bit().constData(), stdout);
    std::fflush(stdout);
}
}

clsCliCommands::clsCliCommands(clsApplication& rcApplication, const clsCliOptions& rcOptions,
                               clsTerminalWindow& rcWindow, clsTerminalDialogs& rcDialogs)
    : mcApplication(rcApplication)
    , mcOptions(rcOptions)
    , mcWindow(rcWindow)
    , mcDialogs(rcDialogs)
{
}

int clsCliCommands::Run()
{
    mcApplication.Selection() = mcOptions.mcSelection;
    mcDialogs.SetSaveFileName(mcOptions.msOutput);
    switch (mcOptions.mCommand) {
    case clsCliOptions::Command::Download:
        return Download();
    case clsCliOptions::Command::Erase:
        return Erase();
    case clsCliOptions::Command::Decode:
        return Decode();
    case clsCliOptions::Command::Id:
        return Id();
    case clsCliOptions::Command::None:
        break;
    }
    return kExitUsage;
}

// The frame every button of the main window runs its operation in.
void clsCliCommands::BeginOperation()
{
    mcApplication.MainWindow().EnableButtons(false);
    mcApplication.MainWindow().EnableMenu(false);
    mcApplication.MainWindow().ClearGrid();
}

int clsCliCommands::EndOperation(clsError& rcError)
{
    const bool lbFailed = rcError.IsError();
    const QString lsDescription = rcError.Description();
    mcApplication.HandleError(rcError);
    mcApplication.MainWindow().AutoSizeTheColumns();
    mcApplication.MainWindow().EnableMenu(true);
    mcApplication.MainWindow().EnableButtons(true);
    mcWindow.Finish();
    if (!lbFailed)
        return kExitOk;
    std::fputs((QStringLiteral("corvane: ") + lsDescription + QLatin1Char('\n')).toLocal8Bit().constData(), stderr);
    return kExitError;
}

void clsCliCommands::Save(clsError& rcError)
{
    if (rcError.IsError())
        return;
    if (mcOptions.msOutput.isEmpty() && !mcOptions.mbInteractive) {
        mcWindow.PrintLine(QStringLiteral("Not saved: -o FILE saves the records as a tab-delimited file."));
        return;
    }
    mcApplication.SaveToDisk(rcError);
}

int clsCliCommands::Download()
{
    BeginOperation();
    clsError lcError;
    mcApplication.ImportDataFromDisplay(lcError);
    Save(lcError);
    const int llExit = EndOperation(lcError);
    if (llExit == kExitOk)
        PrintGrid();
    return llExit;
}

int clsCliCommands::Decode()
{
    BeginOperation();
    clsError lcError;
    mcApplication.DecodeAndProcess(lcError, mcOptions.mcGeometry);
    Save(lcError);
    const int llExit = EndOperation(lcError);
    if (llExit == kExitOk)
        PrintGrid();
    return llExit;
}

// The erase dialogue reports its outcome only in its closing box, as the
// window's does; the box decides the exit status.
int clsCliCommands::Erase()
{
    mcApplication.clearDisplay();
    mcWindow.Finish();
    for (const clsTerminalDialogs::Box& lcBox : mcDialogs.Boxes()) {
        if (lcBox.title == kEraseFailedTitle) {
            QString lsDescription = lcBox.text;
            if (lsDescription.startsWith(kEraseFailedText))
                lsDescription = lsDescription.mid(kEraseFailedText.size());
            std::fputs((QStringLiteral("corvane: ") + lsDescription + QLatin1Char('\n')).toLocal8Bit().constData(),
                       stderr);
            return kExitError;
        }
        if (lcBox.title == kErasedTitle)
            return kExitOk;
    }
    mcWindow.PrintLine(QStringLiteral("Nothing erased."));
    return kExitOk;
}

int clsCliCommands::Id()
{
    BeginOperation();
    clsError lcError;
    const QString lsId = mcApplication.GetDallesID(lcError);
    const int llExit = EndOperation(lcError);
    if (llExit == kExitOk)
        WriteOut(lsId + QLatin1Char('\n'));
    return llExit;
}

void clsCliCommands::PrintGrid()
{
    if (!mcOptions.mbPrint)
        return;
    const QString lsTab = QStringLiteral("\t");
    QString lsText = clsHalvexRecord::GetHeaderStringWithDelimiter(lsTab) + QLatin1Char('\n');
    const clsRecordCollection& rcRecords = mcApplication.Records();
    const clsRecordSelection& rcSelection = mcApplication.Selection();
    for (int i = 1; mcWindow.ShowsRecords() && i <= rcRecords.Count(); ++i) {
        const clsHalvexRecord& rcRecord = rcRecords.Item(i);
        if (rcSelection.Admits(rcRecord))
            lsText += rcRecord.GetFullStringWithDelimiter(lsTab, rcSelection.cheShowRoute) + QLatin1Char('\n');
    }
    WriteOut(lsText);
}
