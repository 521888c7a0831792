#include "cli/clsCliOptions.h"

#include "export/clsExportFormats.h"

#include <QSet>

namespace {
const QSet<QString> kValueOptions = {
    QStringLiteral("-o"), QStringLiteral("--output"), QStringLiteral("--port"), QStringLiteral("--show"),
    QStringLiteral("--home"), QStringLiteral("--places"), QStringLiteral("--geometry"), QStringLiteral("--reconnect"),
    QStringLiteral("--ssl"), QStringLiteral("--sfl"), QStringLiteral("--usl"), QStringLiteral("--ufl"),
    QStringLiteral("--kvt"), QStringLiteral("--kvt-sa"), QStringLiteral("--kvt-snd"), QStringLiteral("--kvt-md"),
    QStringLiteral("--format"),
};
// The options of each upload command: its file types, and the read-back.
const QSet<QString> kDatabaseOptions = {QStringLiteral("--ssl"), QStringLiteral("--sfl"), QStringLiteral("--usl"),
                                        QStringLiteral("--ufl"), QStringLiteral("--verify")};
const QSet<QString> kSoftwareOptions = {QStringLiteral("--kvt"), QStringLiteral("--kvt-sa"),
                                        QStringLiteral("--kvt-snd"), QStringLiteral("--verify")};
const QSet<QString> kFirmwareOptions = {QStringLiteral("--kvt-md")};
const QSet<QString> kCommonOptions = {
    QStringLiteral("--port"), QStringLiteral("--home"), QStringLiteral("--places"), QStringLiteral("--yes"),
    QStringLiteral("--no"), QStringLiteral("--simulate"), QStringLiteral("-v"), QStringLiteral("--verbose"),
    QStringLiteral("--reconnect"),
    QStringLiteral("-q"), QStringLiteral("--quiet"),
};
const QSet<QString> kSaveOptions = {
    QStringLiteral("-o"), QStringLiteral("--output"), QStringLiteral("--print"), QStringLiteral("--show"),
    QStringLiteral("--format"),
};
// No display takes part in a decode, and it runs in a home of its own (the
// page files are copied there), so the options that choose either are refused.
const QSet<QString> kNotForDecode = {QStringLiteral("--port"), QStringLiteral("--simulate"), QStringLiteral("--home"),
                                     QStringLiteral("--reconnect")};

const QString kPortHelp = QStringLiteral(
    "  --port P        the display's serial port: a number (1 is the first port) or a\n"
    "                  device path such as /dev/ttyUSB0; remembered in kvtDsw.ini\n"
    "  --home DIR      the program's directory: kvtDsw.ini, kvtDsw.log, page files\n");
const QString kQuestionHelp = QStringLiteral(
    "  --places FILE   the place table instead of postcode.gps\n"
    "  --yes, --no     the answer to every question; without them a terminal is\n"
    "                  asked, and a run without a terminal stops at the first question\n");
const QString kReconnectHelp = QStringLiteral(
    "  --reconnect N   how often --yes tries a silent display again (default 2);\n"
    "                  then the run stops as if Cancel had been answered\n");
const QString kSimulateHelp = QStringLiteral(
    "  --simulate      use the built-in simulated display full of generated trips\n");
const QString kVerboseHelp = QStringLiteral(
    "  -v, --verbose   also show the log lines on stderr\n"
    "  -q, --quiet     print nothing but errors (and questions that need an answer)\n"
    "  --help          this text\n");
const QString kCommonHelp =
    QStringLiteral("\nCommon options:\n") + kPortHelp + kQuestionHelp + kReconnectHelp + kSimulateHelp + kVerboseHelp;

const QString kVerifyHelp = QStringLiteral(
    "  --verify        read every page back after the upload and compare it with the\n"
    "                  file; a difference is an error naming file, page and offset\n");
const QString kUploadIntro = QStringLiteral(
    "Each option names the file of one type and ticks it, as the Select button and\n"
    "the tick box of the window's upload page do; the file is remembered in\n"
    "kvtDsw.ini. The files are all checked first, then written one after the other,\n"
    "each on fresh pages. A display whose upload area is not empty is erased first\n"
    "when the question \"Display not empty do you whish to continue?\" is answered yes.\n\n");

const QString kSaveHelp = QStringLiteral(
    "  -o FILE         save the records; the extension chooses the format: .txt the\n"
    "                  tab-delimited file, .csv, .xlsx (Excel), .gpx and .kml (maps,\n"
    "                  one track a trip), .pdf (a printable mileage register)\n"
    "  --format FMT    the format whatever the extension: txt, csv, xlsx, gpx, kml, pdf\n"
    "  --print         print the table (header and shown rows, tab-separated) on stdout\n"
    "  --show KINDS    the kinds of record the table shows, comma-separated, from\n"
    "                  route, police, tank, tc, dbg-route, dbg-km, all, none\n"
    "                  (default: route,police,tank,tc)\n");
}

QString clsCliOptions::CommandName(Command vCommand)
{
    switch (vCommand) {
    case Command::Download:
        return QStringLiteral("download");
    case Command::Erase:
        return QStringLiteral("erase");
    case Command::Decode:
        return QStringLiteral("decode");
    case Command::Id:
        return QStringLiteral("id");
    case Command::Detect:
        return QStringLiteral("detect");
    case Command::UploadDb:
        return QStringLiteral("upload-db");
    case Command::UploadSoftware:
        return QStringLiteral("upload-software");
    case Command::UpdateFirmware:
        return QStringLiteral("update-firmware");
    case Command::Ports:
        return QStringLiteral("ports");
    case Command::None:
        break;
    }
    return QString();
}

QString clsCliOptions::ProgramHelp()
{
    return QStringLiteral(
               "Usage: corvane COMMAND [OPTIONS]\n"
               "Corvane Desktop on the command line: copy the logged trips and alarms out of a\n"
               "KVT Memory Display, save them as a tab-delimited file (or for a spreadsheet,\n"
               "a map or as a printable mileage register), erase the display, load new\n"
               "databases and software into it.\n"
               "\n"
               "Commands:\n"
               "  download   copy the logged data from the display and save it (-o FILE)\n"
               "  erase      erase the logged data in the display\n"
               "  decode     decode page files saved earlier (--geometry FIRST,LAST,SIZELOG2 DIR)\n"
               "  id         show the display's ID\n"
               "  detect     probe the port once for a display, greeting one just plugged in\n"
               "  upload-db  load warning databases into the display (--ssl --sfl --usl --ufl)\n"
               "  upload-software  load the display's software (--kvt --kvt-sa --kvt-snd)\n"
               "  update-firmware  update the Memory Display's firmware (--kvt-md)\n"
               "  ports      list the serial ports and mark the KVT USB interface\n")
        + kCommonHelp
        + QStringLiteral("  --version       the program's version\n"
                         "\n"
                         "\"corvane COMMAND --help\" describes one command.\n"
                         "Exit status: 0 done, 1 an error (its text on stderr), 2 bad usage or a\n"
                         "question that nobody could answer.\n");
}

QString clsCliOptions::CommandHelp(Command vCommand)
{
    switch (vCommand) {
    case Command::Download:
        return QStringLiteral("Usage: corvane download [-o FILE] [--print] [--show KINDS] [OPTIONS]\n"
                              "Copies the logged data from the display, decodes it and saves it as a\n"
                              "tab-delimited text file.\n\n"
                              "Options:\n")
            + kSaveHelp + kCommonHelp;
    case Command::Erase:
        return QStringLiteral("Usage: corvane erase [OPTIONS]\n"
                              "Erases the route logging and PoliceCheck data in the display, after asking.\n\n")
            + kCommonHelp;
    case Command::Decode:
        return QStringLiteral("Usage: corvane decode --geometry FIRST,LAST,SIZELOG2 [-o FILE] [--print] DIR\n"
                              "Decodes the page files (PageN.DSW) that an earlier download left in DIR.\n"
                              "They are copied to a temporary home first, so DIR is not changed. The\n"
                              "geometry is the display's: its first and last logging page and the base-2\n"
                              "logarithm of its page size.\n\n"
                              "Options:\n"
                              "  --geometry FIRST,LAST,SIZELOG2   the flash geometry of the display\n")
            + kSaveHelp + kQuestionHelp + kVerboseHelp;
    case Command::Id:
        return QStringLiteral("Usage: corvane id [OPTIONS]\n"
                              "Shows the ID of the connected display.\n\n")
            + kCommonHelp;
    case Command::Detect:
        return QStringLiteral("Usage: corvane detect [OPTIONS]\n"
                              "Asks the port once, as the window does every second, whether a display is\n"
                              "there. A display that was plugged in since it was last asked is greeted as\n"
                              "the window greets it: low-current mode, \"Connected to\" and the program's\n"
                              "name on its screen. Exit status 1 when no display answers.\n\n")
            + kCommonHelp;
    case Command::UploadDb:
        return QStringLiteral("Usage: corvane upload-db [--ssl F] [--sfl F] [--usl F] [--ufl F] [--verify] [OPTIONS]\n"
                              "Loads warning databases into the display, in the order SSL, SFL, USL, UFL.\n")
            + kUploadIntro
            + QStringLiteral("Options:\n"
                             "  --ssl F         the Corvane SpotList\n"
                             "  --sfl F         the Corvane FalseList\n"
                             "  --usl F         your own SpotList\n"
                             "  --ufl F         your own FalseList\n")
            + kVerifyHelp + kCommonHelp;
    case Command::UploadSoftware:
        return QStringLiteral("Usage: corvane upload-software [--kvt F] [--kvt-sa F] [--kvt-snd F] [--verify] [OPTIONS]\n"
                              "Loads the display's software, in the order KVT, KVT_SA, KVT_SND.\n")
            + kUploadIntro
            + QStringLiteral("Options:\n"
                             "  --kvt F         the Corvane Operating System (.kvt)\n"
                             "  --kvt-sa F      the spectrum analyser firmware (.kvt_sa)\n"
                             "  --kvt-snd F     the sounds (.kvt_snd)\n")
            + kVerifyHelp + kCommonHelp;
    case Command::UpdateFirmware:
        return QStringLiteral("Usage: corvane update-firmware [--kvt-md F] [OPTIONS]\n"
                              "Updates the Memory Display's firmware through its bootloader, line by line,\n"
                              "showing the line it sends, the lines rejected (NAK) and the resynchronisations\n"
                              "of a silent unit. Without --kvt-md the file remembered in kvtDsw.ini is sent.\n"
                              "Do not disconnect the display meanwhile. Ctrl+C stops between two lines (exit\n"
                              "status 130); the display then stays in its bootloader until the update is run\n"
                              "again.\n\n"
                              "Options:\n"
                              "  --kvt-md F      the Memory Display firmware (.kvt_md); remembered\n")
            + kCommonHelp;
    case Command::Ports:
        return QStringLiteral("Usage: corvane ports\n"
                              "Lists the serial ports: device path, vendor:product, description and serial\n"
                              "number; the KVT USB interface (0403:e990) is marked. Any of them can be given\n"
                              "to --port.\n");
    case Command::None:
        break;
    }
    return ProgramHelp();
}

QString clsCliOptions::HelpText() const
{
    return CommandHelp(mCommand);
}

bool clsCliOptions::Refuse(const QString& vsWhy)
{
    if (msUsageError.isEmpty())
        msUsageError = vsWhy;
    return false;
}

clsCliOptions::Outcome clsCliOptions::Parse(const QStringList& vcArguments)
{
    struct Given {
        QString name;
        QString value;
    };
    QList<Given> lcGiven;
    bool lbHelp = false;
    bool lbVersion = false;
    bool lbOptionsEnded = false;
    for (int i = 0; i < vcArguments.size(); ++i) {
        const QString& lsArgument = vcArguments[i];
        const bool lbOption = !lbOptionsEnded && lsArgument.startsWith(QLatin1Char('-')) && lsArgument.size() > 1;
        if (!lbOptionsEnded && lsArgument == QLatin1String("--")) {
            lbOptionsEnded = true;
        } else if (lbOption) {
            QString lsName = lsArgument;
            QString lsValue;
            const int llEquals = lsArgument.indexOf(QLatin1Char('='));
            const bool lbInline = lsArgument.startsWith(QLatin1String("--")) && llEquals > 0;
            if (lbInline) {
                lsName = lsArgument.left(llEquals);
                lsValue = lsArgument.mid(llEquals + 1);
            }
            if (lsName == QLatin1String("--help") || lsName == QLatin1String("-h")) {
                lbHelp = true;
                continue;
            }
            if (lsName == QLatin1String("--version")) {
                lbVersion = true;
                continue;
            }
            if (kValueOptions.contains(lsName) && !lbInline) {
                if (i + 1 >= vcArguments.size()) {
                    Refuse(lsName + QStringLiteral(" needs a value"));
                    break;
                }
                lsValue = vcArguments[++i];
            } else if (!kValueOptions.contains(lsName) && lbInline) {
                Refuse(lsName + QStringLiteral(" takes no value"));
                break;
            }
            lcGiven.append({lsName, lsValue});
        } else if (mCommand == Command::None) {
            for (Command lcCommand : {Command::Download, Command::Erase, Command::Decode, Command::Id,
                                      Command::Detect, Command::UploadDb, Command::UploadSoftware, Command::UpdateFirmware,
                                      Command::Ports}) {
                if (CommandName(lcCommand) == lsArgument)
                    mCommand = lcCommand;
            }
            if (mCommand == Command::None) {
                Refuse(QStringLiteral("unknown command \"") + lsArgument + QStringLiteral("\""));
                break;
            }
        } else if (mCommand == Command::Decode && msDecodeDirectory.isEmpty()) {
            msDecodeDirectory = lsArgument;
        } else {
            Refuse(QStringLiteral("unexpected argument \"") + lsArgument + QStringLiteral("\""));
            break;
        }
    }
    if (lbHelp && msUsageError.isEmpty())
        return Outcome::Help;
    if (lbVersion && msUsageError.isEmpty() && mCommand == Command::None && lcGiven.isEmpty())
        return Outcome::Version;
    if (!msUsageError.isEmpty())
        return Outcome::BadUsage;
    if (mCommand == Command::None) {
        Refuse(QStringLiteral("no command given"));
        return Outcome::BadUsage;
    }
    for (const Given& lcOption : lcGiven) {
        if (!TakeOption(lcOption.name, lcOption.value))
            return Outcome::BadUsage;
    }
    return CheckComplete() ? Outcome::Run : Outcome::BadUsage;
}

bool clsCliOptions::Accepts(const QString& vsName) const
{
    if (mCommand == Command::Ports)
        return false;
    if (mCommand == Command::Decode)
        return vsName == QLatin1String("--geometry") || kSaveOptions.contains(vsName)
            || (kCommonOptions.contains(vsName) && !kNotForDecode.contains(vsName));
    if (mCommand == Command::Download)
        return kSaveOptions.contains(vsName) || kCommonOptions.contains(vsName);
    if (mCommand == Command::UploadDb)
        return kDatabaseOptions.contains(vsName) || kCommonOptions.contains(vsName);
    if (mCommand == Command::UploadSoftware)
        return kSoftwareOptions.contains(vsName) || kCommonOptions.contains(vsName);
    if (mCommand == Command::UpdateFirmware)
        return kFirmwareOptions.contains(vsName) || kCommonOptions.contains(vsName);
    return kCommonOptions.contains(vsName);
}

bool clsCliOptions::TakeOption(const QString& vsName, const QString& vsValue)
{
    if (!kValueOptions.contains(vsName) && !kCommonOptions.contains(vsName) && !kSaveOptions.contains(vsName) &&
        vsName != QLatin1String("--verify"))
        return Refuse(QStringLiteral("unknown option ") + vsName);
    if (!Accepts(vsName))
        return Refuse(vsName + QStringLiteral(" does not go with ") + CommandName(mCommand));
    if (kValueOptions.contains(vsName) && vsValue.isEmpty())
        return Refuse(vsName + QStringLiteral(" needs a value"));
    if (vsName == QLatin1String("-o") || vsName == QLatin1String("--output"))
        msOutput = vsValue;
    else if (vsName == QLatin1String("--port"))
        return SetPort(vsValue);
    else if (vsName == QLatin1String("--home"))
        msHome = vsValue;
    else if (vsName == QLatin1String("--places"))
        msPlaces = vsValue;
    else if (vsName == QLatin1String("--show"))
        return SetShow(vsValue);
    else if (vsName == QLatin1String("--geometry"))
        return SetGeometry(vsValue);
    else if (vsName == QLatin1String("--reconnect"))
        return SetReconnects(vsValue);
    else if (vsName == QLatin1String("--print"))
        mbPrint = true;
    else if (vsName == QLatin1String("--verify"))
        mbVerify = true;
    else if (kDatabaseOptions.contains(vsName) || kSoftwareOptions.contains(vsName) || kFirmwareOptions.contains(vsName))
        return SetUploadFile(vsName, vsValue);
    else if (vsName == QLatin1String("--simulate"))
        mbSimulate = true;
    else if (vsName == QLatin1String("-v") || vsName == QLatin1String("--verbose"))
        mbVerbose = true;
    else if (vsName == QLatin1String("-q") || vsName == QLatin1String("--quiet"))
        mbQuiet = true;
    else if (vsName == QLatin1String("--format"))
        return SetFormat(vsValue);
    else if (vsName == QLatin1String("--yes") || vsName == QLatin1String("--no")) {
        const Answer lcAnswer = vsName == QLatin1String("--yes") ? Answer::Yes : Answer::No;
        if (mAnswer != Answer::Ask && mAnswer != lcAnswer)
            return Refuse(QStringLiteral("--yes and --no exclude each other"));
        mAnswer = lcAnswer;
    }
    return true;
}

// A number is a port number from 1 on; anything else is a device name or path.
bool clsCliOptions::SetPort(const QString& vsPort)
{
    bool lbNumber = false;
    const int llNumber = vsPort.toInt(&lbNumber);
    if (lbNumber && llNumber < 1)
        return Refuse(QStringLiteral("--port ") + vsPort + QStringLiteral(": port numbers start at 1"));
    msPort = vsPort;
    return true;
}

bool clsCliOptions::SetShow(const QString& vsKinds)
{
    clsRecordSelection lcSelection;
    lcSelection.cheRitRegistratie = lcSelection.chePoliceCheck = lcSelection.cheRitRegistratieTankstop
        = lcSelection.chePoliceCheckTc = lcSelection.cheDebugRoute = lcSelection.cheDebugKmCorrection = false;
    for (const QString& lsKind : vsKinds.split(QLatin1Char(','))) {
        const QString lsName = lsKind.trimmed().toLower();
        const bool lbAll = lsName == QLatin1String("all");
        if (lsName == QLatin1String("none"))
            continue;
        bool lbKnown = lbAll;
        const auto lcTick = [&](const char* vsKind, bool& rbBox) {
            if (lbAll || lsName == QLatin1String(vsKind)) {
                rbBox = true;
                lbKnown = true;
            }
        };
        lcTick("route", lcSelection.cheRitRegistratie);
        lcTick("police", lcSelection.chePoliceCheck);
        lcTick("tank", lcSelection.cheRitRegistratieTankstop);
        lcTick("tc", lcSelection.chePoliceCheckTc);
        lcTick("dbg-route", lcSelection.cheDebugRoute);
        lcTick("dbg-km", lcSelection.cheDebugKmCorrection);
        if (!lbKnown)
            return Refuse(QStringLiteral("unknown kind \"") + lsKind
                          + QStringLiteral("\" for --show (route, police, tank, tc, dbg-route, dbg-km, all, none)"));
    }
    mcSelection = lcSelection;
    return true;
}

QString clsCliOptions::ExportFormat() const
{
    if (!msFormat.isEmpty())
        return msFormat;
    const QString lsFormat = clsExportFormats::OfFile(msOutput);
    return lsFormat.isEmpty() ? QStringLiteral("txt") : lsFormat;
}

bool clsCliOptions::SetFormat(const QString& vsFormat)
{
    if (!clsExportFormats::Names().contains(vsFormat.toLower()))
        return Refuse(QStringLiteral("unknown format \"") + vsFormat + QStringLiteral("\" for --format (")
                      + clsExportFormats::Names().join(QStringLiteral(", ")) + QLatin1Char(')'));
    msFormat = vsFormat.toLower();
    return true;
}

bool clsCliOptions::SetGeometry(const QString& vsGeometry)
{
    const QStringList lcParts = vsGeometry.split(QLatin1Char(','));
    bool lbOk = lcParts.size() == 3;
    qint32 llValues[3] = {};
    for (int i = 0; lbOk && i < 3; ++i)
        llValues[i] = lcParts[i].trimmed().toInt(&lbOk);
    // Every page size a display can report whose byte count fits a 32-bit
    // integer; a page smaller than a record simply holds none.
    if (!lbOk || llValues[0] < 0 || llValues[1] < llValues[0] || llValues[2] < 0 || llValues[2] > 30)
        return Refuse(QStringLiteral("--geometry wants FIRST,LAST,SIZELOG2 with 0 <= FIRST <= LAST and "
                                     "0 <= SIZELOG2 <= 30, not \"")
                      + vsGeometry + QStringLiteral("\""));
    mcGeometry.SetFirstPage(llValues[0]);
    mcGeometry.SetLastPage(llValues[1]);
    mcGeometry.SetSizeOnePage(llValues[2]);
    mbGeometryGiven = true;
    return true;
}

bool clsCliOptions::SetUploadFile(const QString& vsOption, const QString& vsFile)
{
    for (const clsUpgradeFile::Row& lcRow : clsUpgradeFile::Table()) {
        if (vsOption != QLatin1String(lcRow.Option))
            continue;
        for (const auto& lcGiven : mcUploadFiles)
            if (lcGiven.first == lcRow.Type)
                return Refuse(vsOption + QStringLiteral(" is given twice"));
        mcUploadFiles.append({lcRow.Type, vsFile});
        return true;
    }
    return Refuse(QStringLiteral("unknown option ") + vsOption);
}

bool clsCliOptions::SetReconnects(const QString& vsCount)
{
    bool lbOk = false;
    const int llCount = vsCount.toInt(&lbOk);
    if (!lbOk || llCount < 0)
        return Refuse(QStringLiteral("--reconnect wants a number from 0 on, not \"") + vsCount + QStringLiteral("\""));
    mlReconnects = llCount;
    return true;
}

bool clsCliOptions::CheckComplete()
{
    if (mCommand != Command::Decode)
        return true;
    if (!mbGeometryGiven)
        return Refuse(QStringLiteral("decode needs --geometry FIRST,LAST,SIZELOG2"));
    if (msDecodeDirectory.isEmpty())
        return Refuse(QStringLiteral("decode needs the directory that holds the page files"));
    return true;
}
