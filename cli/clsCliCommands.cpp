#include "cli/clsCliCommands.h"

#include "app/clsApplication.h"
#include "app/clsLogger.h"
#include "cli/clsCliInterrupt.h"
#include "cli/clsTerminalDialogs.h"
#include "cli/clsTerminalWindow.h"
#include "data/clsHalvexRecord.h"
#include "data/clsRecordCollection.h"
#include "platform/IMainWindow.h"

#include <QFileInfo>
#include <cstdio>

namespace {
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
    case clsCliOptions::Command::Detect:
        return Detect();
    case clsCliOptions::Command::UploadDb:
        return Upload(false);
    case clsCliOptions::Command::UploadSoftware:
        return Upload(true);
    case clsCliOptions::Command::UpdateFirmware:
        return UpdateFirmware();
    // Listed before the application starts: no port is opened for it.
    case clsCliOptions::Command::Ports:
    case clsCliOptions::Command::None:
        break;
    }
    return kExitUsage;
}

// The outcome of the frame decides: the error's text on stderr and status 1.
int clsCliCommands::Finish(const clsOutcome& vcOutcome)
{
    mcWindow.Finish();
    if (!vcOutcome.IsError())
        return kExitOk;
    mcWindow.PrintLine(QStringLiteral("corvane: ") + vcOutcome.Description);
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
    // The tab-delimited file goes through the window's Save, its setting and questions included.
    const QString lsFormat = mcOptions.ExportFormat();
    if (lsFormat == QLatin1String("txt"))
        mcApplication.SaveToDisk(rcError);
    else
        mcApplication.ExportAs(rcError, lsFormat);
}

int clsCliCommands::Download()
{
    const int llExit = Finish(mcApplication.RunOperation([this](clsError& rcError) {
        mcApplication.ImportDataFromDisplay(rcError);
        Save(rcError);
    }));
    if (llExit == kExitOk)
        PrintGrid();
    return llExit;
}

int clsCliCommands::Decode()
{
    const int llExit = Finish(mcApplication.RunOperation([this](clsError& rcError) {
        mcApplication.DecodeAndProcess(rcError, mcOptions.mcGeometry);
        Save(rcError);
    }));
    if (llExit == kExitOk)
        PrintGrid();
    return llExit;
}

// The erase dialogue runs its own frame; a question answered No erases nothing.
int clsCliCommands::Erase()
{
    const clsOutcome lcOutcome = mcApplication.clearDisplay();
    if (lcOutcome.Cancelled && !lcOutcome.IsError()) {
        mcWindow.Finish();
        mcWindow.PrintLine(QStringLiteral("Nothing erased."));
        return kExitOk;
    }
    return Finish(lcOutcome);
}

int clsCliCommands::Id()
{
    QString lsId;
    const int llExit =
        Finish(mcApplication.RunOperation([&](clsError& rcError) { lsId = mcApplication.GetDallesID(rcError); }));
    if (llExit == kExitOk)
        WriteOut(lsId + QLatin1Char('\n'));
    return llExit;
}

// One round of the window's once-a-second probe. It runs outside an operation,
// as the window's timer does (an operation switches the probe off); the timer
// itself is stopped so that it cannot tick into the round's own waits.
int clsCliCommands::Detect()
{
    mcApplication.StopAutoDetection();
    const clsApplication::Detection lcFound = mcApplication.PerformAutoDetect();
    mcWindow.Finish();
    switch (lcFound) {
    case clsApplication::Detection::Greeted:
        WriteOut(QStringLiteral("Display detected: greeted with \"Connected to\" and \"%1\"\n")
                     .arg(mcApplication.ApplicationName()));
        return kExitOk;
    case clsApplication::Detection::Present:
        WriteOut(QStringLiteral("Display present: greeted before, it is greeted again once plugged in anew\n"));
        return kExitOk;
    case clsApplication::Detection::NoAnswer:
        mcWindow.PrintLine(QStringLiteral("corvane: no display answers"));
        return kExitError;
    case clsApplication::Detection::NotRun:
        break;
    }
    mcWindow.PrintLine(QStringLiteral("corvane: the probe did not run"));
    return kExitError;
}

void clsCliCommands::ChooseUploadFiles()
{
    for (const auto& lcGiven : mcOptions.mcUploadFiles) {
        mcDialogs.SetOpenFileName(QFileInfo(lcGiven.second).absoluteFilePath());
        mcApplication.GetNewFileNameForUpload(lcGiven.first);
        mcApplication.UploadSelection().SetTicked(lcGiven.first, true);
    }
}

// The upload button of the window's page, boxes and all; nothing ticked is an error here.
int clsCliCommands::Upload(bool vbSoftware)
{
    mcApplication.SetVerifyUploads(mcOptions.mbVerify);
    ChooseUploadFiles();
    return Finish(vbSoftware ? mcApplication.cmdInstallKVTSoftware_Click() : mcApplication.cmdUploadDatabases_Click());
}

// The firmware file box shows the remembered file unless another is named.
// Rejected lines and resynchronisations are shown as they happen, and Ctrl+C
// asks the stream to stop between two lines.
int clsCliCommands::UpdateFirmware()
{
    mcApplication.ShowLastUploadFiles();
    ChooseUploadFiles();
    if (!mcOptions.mbVerbose)
        mcApplication.Logger().SetEcho([this](const QString& vsLine) {
            const int llWarning = vsLine.indexOf(QLatin1String("WARNING "));
            if (llWarning >= 0)
                mcWindow.PrintLine(vsLine.mid(llWarning + 8));
        });
    clsCliInterrupt lcInterrupt([this]() { mcApplication.RequestCancel(); });
    const clsOutcome lcOutcome = mcApplication.cmdInstallKVTMemoryDisplay_Click();
    const int llExit = Finish(lcOutcome);
    return lcOutcome.Cancelled ? kExitInterrupted : llExit;
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
