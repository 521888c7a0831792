#pragma once

#include "data/clsFlashMemInfo.h"
#include "data/clsRecordSelection.h"
#include "upload/clsUpgradeFile.h"

#include <QList>
#include <QPair>

#include <QDateTime>
#include <QString>
#include <QStringList>

// What the command line asked for. Parse fills it from the arguments (the
// program name left out) and says whether they made sense.
class clsCliOptions
{
public:
    enum class Command { None, Download, Erase, Decode, Id, Detect, UploadDb, UploadSoftware, UpdateFirmware, Ports };
    enum class Answer { Ask, Yes, No };
    enum class Outcome { Run, Help, Version, BadUsage };

    Outcome Parse(const QStringList& vcArguments);

    // The help text of the command given, or of the program when none was.
    QString HelpText() const;
    // Why the arguments were refused; set when Parse gave BadUsage.
    QString UsageError() const { return msUsageError; }

    // The format -o is saved in: --format, else the extension of -o, else the tab-delimited file.
    QString ExportFormat() const;

    static QString ProgramHelp();
    static QString CommandHelp(Command vCommand);
    static QString CommandName(Command vCommand);

    Command mCommand = Command::None;
    QString msOutput;
    // --format: the export format by name (csv, pdf …); empty to go by the extension of -o.
    QString msFormat;
    bool mbQuiet = false;
    QString msPort;
    bool mbPrint = false;
    clsRecordSelection mcSelection;
    QString msHome;
    QString msPlaces;
    Answer mAnswer = Answer::Ask;
    // How often --yes answers OK when a silent display is to be tried again.
    int mlReconnects = 2;
    bool mbSimulate = false;
    bool mbVerbose = false;
    clsFlashMemInfo mcGeometry;
    bool mbGeometryGiven = false;
    QString msDecodeDirectory;
    // The upload files named (--ssl F …), in the order given; each ticks its type.
    QList<QPair<UploadType, QString>> mcUploadFiles;
    bool mbVerify = false;
    // When the page files of a decode were written (set by the caller, not parsed).
    QDateTime mcPagesTaken;
    // Whether questions can be put to a user: stdin and stderr are a terminal (set by the caller, not parsed).
    bool mbInteractive = false;

private:
    bool Refuse(const QString& vsWhy);
    bool TakeOption(const QString& vsName, const QString& vsValue);
    bool Accepts(const QString& vsName) const;
    bool SetPort(const QString& vsPort);
    bool SetShow(const QString& vsKinds);
    bool SetGeometry(const QString& vsGeometry);
    bool SetUploadFile(const QString& vsOption, const QString& vsFile);
    bool SetReconnects(const QString& vsCount);
    bool SetFormat(const QString& vsFormat);
    bool CheckComplete();

    QString msUsageError;
};
